#include "exchange/shown_unit.h"
#include "panel/api/api_routes.h"
#include "panel/api/json_text.h"
#include "project/json_document.h"
#include "project/json_node.h"
#include "project/symbol_tree.h"

namespace plc::panel {
namespace {

using project::JsonNode;

constexpr int kMostNamed = 200; ///< Labels of a query.

Expected<QVector<ValueName>> namesOf(const QByteArray& body)
{
    const Expected<project::JsonDocument> document = project::JsonDocument::parse(body);
    if (!document)
        return document.error();
    project::DocumentErrors errors(QStringLiteral("the body"));
    const JsonNode root(document->root(), &errors);
    root.checkKeys({"values"}, {});
    QVector<ValueName> names;
    if (errors.isEmpty()) {
        const JsonNode list = root.member("values");
        for (const JsonNode each : list.elements()) {
            if (!errors.isEmpty())
                break;
            if (names.size() == Subscriptions::kMostValues) {
                list.fail(QStringLiteral("more than %1 values").arg(Subscriptions::kMostValues));
                break;
            }
            each.checkKeys({"plc", "label"}, {});
            names.append({each.member("plc").text(), each.member("label").text()});
        }
    }
    if (!errors.isEmpty())
        return Error{errors.first()};
    return names;
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
    const Expected<QVector<ValueName>> names = namesOf(request.body);
    if (!names) {
        respond(badRequest(names.error().text));
        return;
    }
    const Expected<QString> id = context.subscriptions->add(*names);
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
        const Expected<QString> made = context.subscriptions->add(names);
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
    return {
        {Method::Post, "/api/v1/subscriptions", Role::Viewer, Route::Reads,
         "Have values followed; /events tells them", onPlants(context, &subscribe)},
        {Method::Delete, "/api/v1/subscriptions/{id}", Role::Viewer, Route::Reads,
         "End a subscription", onPlants(context, &unsubscribe)},
        {Method::Get, "/api/v1/events", Role::Viewer, Route::Reads,
         "Values, links and alarms as they change (text/event-stream)",
         onPlants(context, &openEvents)},
    };
}

} // namespace plc::panel
