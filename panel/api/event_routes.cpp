#include "exchange/shown_unit.h"
#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "panel/api/request_bodies.h"
#include "project/symbol_tree.h"

namespace plc::panel {
namespace {

constexpr int kMostNamed = 200; ///< Labels of a query.
/// Bytes: as many values as there may be, whose PLC and label have 80 letters together.
constexpr int kLongestList = 2 * 1024 * 1024;

/// Users have a share wherever they come from; where nobody logs in, each address has one.
QString ownerOf(const Caller& caller)
{
    return caller.session.isEmpty() ? QStringLiteral("address ") + caller.address
                                    : QStringLiteral("user ") + caller.user;
}

void appendItem(const Subscriptions::Item& item, QByteArray* json)
{
    json->append(json->endsWith('[') ? "{" : ",{");
    appendMember("plc", item.name.plc, json);
    appendMember("label", item.name.label, json);
    if (item.slot < 0) {
        appendMember("error", item.error, json);
    } else {
        const host::DataPoint& point = item.plant->point(item.slot);
        appendMember("type", QLatin1String(point.type->name), json);
        appendMember("unit", exchange::shownUnit(point), json);
        appendMember("description", point.description, json);
        appendTruth("writable", item.plant->isWritable(point), json);
    }
    json->append('}');
}

void subscribe(const ApiContext& context, const Request& request, const Responder& respond)
{
    const Expected<QVector<ValueName>> names = readValueNames(request.body);
    if (!names) {
        respond(badRequest(names.error().text));
        return;
    }
    const Expected<QString> id = context.subscriptions->add(*names, ownerOf(request.caller));
    if (!id) {
        respond(Response::error(503, id.error().text));
        return;
    }
    QByteArray json = "{";
    appendMember("id", *id, &json);
    json.append(",\"values\":[");
    for (const Subscriptions::Item& item : *context.subscriptions->items(*id))
        appendItem(item, &json);
    respond(Response::json(json.append("]}\n"), 201));
}

void unsubscribe(const ApiContext& context, const Request& request, const Responder& respond)
{
    if (context.subscriptions->remove(request.parameters.value(QStringLiteral("id"))))
        respond(Response::nothing());
    else
        respond(notFound(QStringLiteral("there is no such subscription")));
}

void openEvents(const ApiContext& context, const Request& request, const Responder& respond)
{
    QString id = request.first(QStringLiteral("subscription")).value_or(QString());
    if (id.isEmpty()) {
        const QString plc = request.first(QStringLiteral("plc")).value_or(QString());
        const QStringList labels = request.all(QStringLiteral("label"));
        if (labels.size() > kMostNamed) {
            respond(badRequest(
                QStringLiteral("at most %1 times \"label\"; subscribe to more").arg(kMostNamed)));
            return;
        }
        QVector<ValueName> names;
        for (const QString& label : labels)
            names.append({plc, label});
        const Expected<QString> made = context.subscriptions->add(names, ownerOf(request.caller));
        if (!made) {
            respond(Response::error(503, made.error().text));
            return;
        }
        id = *made;
        // A word that is wrong here is told, since no list of values tells it.
        for (const Subscriptions::Item& item : *context.subscriptions->items(id)) {
            if (item.slot >= 0)
                continue;
            const QString error = item.error;
            context.subscriptions->remove(id);
            respond(badRequest(error));
            return;
        }
    }
    const auto isAllowed = [access = context.access, caller = request.caller] {
        return access->isValid(caller);
    };
    const std::shared_ptr<EventStream> stream = context.subscriptions->open(id, isAllowed);
    if (stream)
        respond(Response::events(stream));
    else
        respond(notFound(QStringLiteral("there is no such subscription; it may have ended")));
}

} // namespace

QVector<Route> eventRoutes(const ApiContext& context)
{
    Route follow{Method::Post,
                 "/api/v1/subscriptions",
                 Role::Viewer,
                 Route::Reads,
                 "Have values followed; /events tells them",
                 onPlants(context, &subscribe)};
    follow.mostBodyBytes = kLongestList;
    return {
        follow,
        {Method::Delete, "/api/v1/subscriptions/{id}", Role::Viewer, Route::Reads,
         "End a subscription", onPlants(context, &unsubscribe)},
        {Method::Get, "/api/v1/events", Role::Viewer, Route::Reads,
         "Values, links and alarms as they change (text/event-stream)",
         onPlants(context, &openEvents)},
    };
}

} // namespace plc::panel
