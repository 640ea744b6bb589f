#ifndef PLC_PANEL_API_AUDITED_H
#define PLC_PANEL_API_AUDITED_H

#include "panel/api/api_context.h"

namespace plc::panel {

/// What is asked for by a request, at this moment.
inline AuditRecord recordOf(const ApiContext& context, const Request& request, const char* action,
                            const QString& plc, const QString& label)
{
    AuditRecord record;
    record.time = context.time();
    record.action = QLatin1String(action);
    record.user = request.caller.user;
    record.address = request.caller.address;
    record.plc = plc;
    record.label = label;
    return record;
}

/// Does what is asked for once that is on record; answers where it cannot be. Called by the thread
/// of the PLCs, which does other things meanwhile.
inline void whenRecorded(const ApiContext& context, const AuditRecord& record,
                         const Responder& respond, std::function<void()> work)
{
    context.audit(record, [respond, work = std::move(work)](const Expected<void>& isKept) {
        if (isKept)
            work();
        else
            respond(Response::error(
                503, QStringLiteral("the audit cannot be written: %1").arg(isKept.error().text)));
    });
}

/// Answers once it is on record what came of it, or cannot be. `reason` is empty for what is done.
/// What the panel itself could not do was refused by nobody.
inline void recordEnd(const ApiContext& context, AuditRecord record, const QString& reason,
                      std::function<void()> answer,
                      const QString& outcome = QStringLiteral("notDone"))
{
    record.time = context.time();
    record.phase = AuditRecord::Outcome;
    record.outcome = reason.isEmpty() ? QStringLiteral("done") : outcome;
    record.reason = reason;
    context.audit(record, [answer = std::move(answer)](const Expected<void>&) { answer(); });
}

} // namespace plc::panel

#endif
