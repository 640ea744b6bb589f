#include <limits>

#include "exchange/flat_json.h"
#include "panel/api/alarm_feed.h"
#include "panel/api/api_routes.h"

namespace plc::panel {
namespace {

constexpr int kUsualOccurrences = 1000;
constexpr int kMostOccurrences = 10000;

void listAlarms(const ApiContext& context, const Request&, const Responder& respond)
{
    const AlarmEngine& engine = context.alarms->desk().engine();
    QByteArray json = "{\"alarms\":[";
    for (int alarm = 0; alarm < int(engine.alarms().size()); ++alarm) {
        if (alarm > 0)
            json.append(',');
        json.append(alarmText(engine, alarm));
    }
    respond(Response::json(json.append("]}\n")));
}

void listPastAlarms(const ApiContext& context, const Request& request, const Responder& respond)
{
    bool isGood = true;
    const auto number = [&](const char* name, qint64 usual) {
        const std::optional<QString> text = request.first(QLatin1String(name));
        bool ok = true;
        const qint64 found = text ? text->toLongLong(&ok, 10) : usual;
        isGood = isGood && ok;
        return found;
    };
    const qint64 from = number("from", 0);
    const qint64 to = number("to", std::numeric_limits<qint64>::max());
    const qint64 limit = number("limit", kUsualOccurrences);
    if (!isGood || limit < 1 || limit > kMostOccurrences) {
        respond(badRequest(QStringLiteral("\"from\" and \"to\" are milliseconds since 1970, "
                                          "\"limit\" is from 1 to %1")
                               .arg(kMostOccurrences)));
        return;
    }
    const auto found = context.alarms->desk().between(from, to, int(limit));
    if (!found) {
        respond(Response::error(503, found.error().text));
        return;
    }
    QByteArray json = "{\"alarms\":[";
    for (const AlarmOccurrence& occurrence : *found) {
        if (!json.endsWith('['))
            json.append(',');
        json.append(occurrenceText(occurrence));
    }
    respond(Response::json(json.append("]}\n")));
}

std::optional<qint64> beginOf(const QByteArray& body)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(body);
    const exchange::JsonItem* item = json ? json->member("since") : nullptr;
    if (!item || item->isList || item->values.size() != 1)
        return {};
    const qint64* number = std::get_if<qint64>(&item->values.first());
    return number ? std::optional<qint64>(*number) : std::nullopt;
}

void acknowledge(const ApiContext& context, const Request& request, const Responder& respond)
{
    const std::optional<qint64> begin = beginOf(request.body);
    if (!begin) {
        respond(badRequest(QStringLiteral("\"since\" of the alarm is expected")));
        return;
    }
    AlarmDesk& desk = context.alarms->desk();
    const QString id = request.parameters.value(QStringLiteral("id"));
    const AlarmDesk::Acknowledgement result =
        desk.acknowledge(id, *begin, request.caller.user, context.time());
    switch (result.refusal) {
        case AlarmDesk::Refusal::None:
            context.alarms->settle(context.time());
            respond(Response::json(alarmText(desk.engine(), desk.engine().find(id)) + '\n'));
            return;
        case AlarmDesk::Refusal::NoSuchAlarm:
            respond(notFound(result.reason));
            return;
        case AlarmDesk::Refusal::NotThat:
            respond(Response::error(409, result.reason));
            return;
        case AlarmDesk::Refusal::NotKept:
            respond(Response::error(503, result.reason));
            return;
    }
}

} // namespace

QVector<Route> alarmRoutes(const ApiContext& context)
{
    return {
        {Method::Get, "/api/v1/alarms", Role::Viewer, Route::Reads, "Alarms and their states",
         onPlants(context, &listAlarms)},
        {Method::Get, "/api/v1/alarms/history", Role::Viewer, Route::Reads,
         "Alarms of the past, the newest first", onPlants(context, &listPastAlarms)},
        {Method::Post, "/api/v1/alarms/{id}/acknowledge", Role::Operator, Route::Changes,
         "Acknowledge an alarm", onPlants(context, &acknowledge)},
    };
}

} // namespace plc::panel
