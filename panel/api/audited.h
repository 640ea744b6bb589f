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

/// Whether it is on record that this is asked for; answers where it cannot be.
inline bool isRecorded(const ApiContext& context, const AuditRecord& record,
                       const Responder& respond)
{
    const Expected<void> isKept = context.audit(record);
    if (!isKept)
        respond(Response::error(
            503, QStringLiteral("the audit cannot be written: %1").arg(isKept.error().text)));
    return bool(isKept);
}

/// What came of it. `reason` is empty for what is done. What the panel itself could not do was
/// refused by nobody.
inline void recordEnd(const ApiContext& context, AuditRecord record, const QString& reason,
                      const QString& outcome = QStringLiteral("notDone"))
{
    record.time = context.time();
    record.phase = AuditRecord::Outcome;
    record.outcome = reason.isEmpty() ? QStringLiteral("done") : outcome;
    record.reason = reason;
    static_cast<void>(context.audit(record));
}

} // namespace plc::panel

#endif
