#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "panel/api/request_bodies.h"

namespace plc::panel {
namespace {

Expected<WriteRequest> requestOf(const Request& request)
{
    Expected<WriteRequest> write = readWrite(request.body);
    if (write) {
        write->user = request.caller.user;
        write->address = request.caller.address;
    }
    return write;
}

QByteArray recordText(const WriteRecord& record)
{
    QByteArray json = "{";
    appendMember("id", record.request.id, &json);
    appendMember("plc", record.request.plc, &json);
    appendMember("label", record.request.label, &json);
    appendKey("value", &json);
    json.append(record.value);
    appendKey("old", &json);
    json.append(record.old.isEmpty() ? QByteArray("null") : record.old);
    if (!record.isSettled) {
        appendMember("outcome", QStringLiteral("pending"), &json);
        return json.append("}\n");
    }
    appendMember("outcome", QLatin1String(outcomeWord(record.outcome.kind)), &json);
    appendKey("status", &json);
    if (record.outcome.status < 0)
        json.append("null");
    else
        appendNumber(record.outcome.status, &json);
    appendMember("reason", record.outcome.reason, &json);
    appendMember("time", record.outcome.time, &json);
    return json.append("}\n");
}

void write(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<WriteRequest> wanted = requestOf(request);
    if (!wanted) {
        respond(badRequest(wanted.error().text));
        return;
    }
    const WriteDesk::Taken taken = context.writes->take(
        *wanted,
        [respond](const WriteRecord& record) { respond(Response::json(recordText(record))); });
    switch (taken.refusal) {
        case WriteDesk::Refusal::None:
            return;
        case WriteDesk::Refusal::Senseless:
            respond(badRequest(taken.reason));
            return;
        case WriteDesk::Refusal::NoSuchPlc:
            respond(notFound(taken.reason));
            return;
        case WriteDesk::Refusal::OtherContent:
            respond(Response::error(409, taken.reason));
            return;
        case WriteDesk::Refusal::NotKept:
            respond(Response::error(410, taken.reason));
            return;
    }
}

void showWrite(const ApiContext& context, const Request& request, const Responder& respond)
{
    const QString id = request.parameters.value(QStringLiteral("id"));
    if (const WriteRecord* record = context.writes->find(id))
        respond(Response::json(recordText(*record)));
    else if (context.writes->isForgotten(id))
        respond(Response::error(410, QString::fromLatin1(WriteDesk::kOutcomeIsNotKept)));
    else
        respond(notFound(QStringLiteral("there is no write of this id")));
}

} // namespace

QVector<Route> writeRoutes(const ApiContext& context)
{
    return {
        {Method::Post, "/api/v1/writes", Role::Operator, Route::Changes, "Write a value",
         onPlants(context, &write)},
        {Method::Get, "/api/v1/writes/{id}", Role::Operator, Route::Reads, "How a write ended",
         onPlants(context, &showWrite)},
    };
}

} // namespace plc::panel
