#include "exchange/flat_json.h"
#include "panel/api/alarm_watch.h"
#include "panel/api/api_routes.h"
#include "panel/api/audited.h"
#include "panel/api/query_numbers.h"

namespace plc::panel {
namespace {

constexpr int kUsualAlarms = 1000;
constexpr int kMostAlarms = 10000;

void listAlarms(const ApiContext& context, const Request&, const Responder& respond)
{
    respond(Response::json(context.alarms->list()));
}

void showPast(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<qint64> from = timeOf(request, "from", 0);
    const Expected<qint64> to = timeOf(request, "to", context.time());
    const Expected<qint64> limit = numberOf(request, "limit", kUsualAlarms, 1, kMostAlarms);
    for (const Expected<qint64>* number : {&from, &to, &limit}) {
        if (!*number)
            return respond(badRequest(number->error().text));
    }
    context.alarms->history(
        *from, *to, int(*limit), [context, respond](const Expected<QVector<PastAlarm>>& past) {
            if (!past)
                return respond(Response::error(503, past.error().text));
            context.slowly(respond,
                           [past = *past] { return Response::json(pastAlarmsText(past)); });
        });
}

/// The time in the body; an error: there is none.
Expected<qint64> sinceOf(const Request& request)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(request.body);
    const exchange::JsonItem* item = json ? json->member("since") : nullptr;
    if (item && !item->isList && item->values.size() == 1) {
        if (const auto* number = std::get_if<qint64>(&item->values.first()))
            return *number;
    }
    return Error{QStringLiteral("\"since\": the begin of the occurrence in ms is expected")};
}

int statusOf(AlarmDesk::Refusal refusal)
{
    switch (refusal) {
        case AlarmDesk::Refusal::NoSuchAlarm:
            return 404;
        case AlarmDesk::Refusal::NotThat:
            return 409;
        default:
            return 503;
    }
}

AuditRecord acknowledgementRecord(const ApiContext& context, const Request& request, int alarm)
{
    AuditRecord record = recordOf(context, request, "acknowledge", {}, {});
    record.id = request.parameters.value(QStringLiteral("id"));
    if (alarm >= 0) {
        record.plc = context.alarms->desk()->engine().alarms()[alarm].plc;
        record.label = context.alarms->desk()->engine().alarms()[alarm].label;
    }
    return record;
}

Response acknowledgementResponse(const ApiContext& context, const QString& id,
                                 const AlarmDesk::Acknowledgement& done)
{
    if (done.refusal != AlarmDesk::Refusal::None)
        return Response::error(statusOf(done.refusal), done.reason);
    context.alarms->passSecond();
    return Response::json(context.alarms->one(context.alarms->desk()->engine().find(id)) + '\n');
}

/// `record`: what is on record as asked for.
void carryOut(const ApiContext& context, const Request& request, const Responder& respond,
              const AuditRecord& record, qint64 since)
{
    const QString id = request.parameters.value(QStringLiteral("id"));
    context.alarms->acknowledge(
        id, since, request.caller.user,
        [context, respond, record, id](const AlarmDesk::Acknowledgement& done) {
            const Response response = acknowledgementResponse(context, id, done);
            recordEnd(context, record, done.reason, [respond, response] { respond(response); });
        });
}

void acknowledge(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<qint64> since = sinceOf(request);
    if (!since)
        return respond(badRequest(since.error().text));
    const QString id = request.parameters.value(QStringLiteral("id"));
    const int alarm = context.alarms->desk()->engine().find(id);
    const AuditRecord record = acknowledgementRecord(context, request, alarm);
    whenRecorded(context, record, respond, [context, request, respond, record, since = *since] {
        carryOut(context, request, respond, record, since);
    });
}

} // namespace

QVector<Route> alarmRoutes(const ApiContext& context)
{
    return {
        {Method::Get, "/api/v1/alarms", Role::Viewer, Route::Reads, "Alarms as they are now",
         onPlants(context, &listAlarms)},
        {Method::Get, "/api/v1/alarms/history", Role::Viewer, Route::Reads,
         "Alarms of a time, the newest first", onPlants(context, &showPast)},
        {Method::Post, "/api/v1/alarms/{id}/acknowledge", Role::Operator, Route::Changes,
         "Acknowledge an alarm", onPlants(context, &acknowledge)},
    };
}

} // namespace plc::panel
