#include "panel/api/request_bodies.h"

#include "exchange/flat_json.h"
#include "panel/access/audit_chain.h"
#include "project/json_document.h"
#include "project/json_node.h"

namespace plc::panel {
namespace {

using exchange::FlatJson;
using exchange::JsonItem;
using project::JsonNode;

/// A text that must be there.
Expected<QString> textMember(const FlatJson& json, const char* key)
{
    const QString* const text = json.text(key);
    if (!text)
        return Error{QStringLiteral("\"%1\": a text is expected").arg(QLatin1String(key))};
    return *text;
}

QString jsonOf(const JsonItem& item)
{
    QStringList texts;
    for (const values::Value& value : item.values)
        texts.append(values::valueJson(value));
    const QString text = texts.join(QLatin1Char(','));
    return item.isList ? QLatin1Char('[') + text + QLatin1Char(']') : text;
}

} // namespace

Expected<QVector<ValueName>> readValueNames(const QByteArray& body)
{
    const Expected<project::JsonDocument> document = project::JsonDocument::parseStrictly(body);
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

Expected<WriteRequest> readWrite(const QByteArray& body)
{
    const Expected<FlatJson> json = exchange::parseFlatJson(body);
    if (!json)
        return json.error();
    for (const exchange::JsonMember& member : json->members) {
        if (!QStringList{QStringLiteral("id"), QStringLiteral("plc"), QStringLiteral("label"),
                         QStringLiteral("value"), QStringLiteral("old")}
                 .contains(member.key))
            return Error{QStringLiteral("%1: not known; id, plc, label, value and old are")
                             .arg(values::jsonText(member.key))};
    }
    const Expected<QString> id = textMember(*json, "id");
    const Expected<QString> plc = textMember(*json, "plc");
    const Expected<QString> label = textMember(*json, "label");
    for (const Expected<QString>* text : {&id, &plc, &label}) {
        if (!*text)
            return text->error();
    }
    const JsonItem* value = json->member("value");
    if (!value || value->values.isEmpty())
        return Error{QStringLiteral("\"value\": a value is expected")};
    WriteRequest write;
    write.id = *id;
    write.plc = *plc;
    write.label = *label;
    write.values = value->values;
    write.isList = value->isList;
    if (const JsonItem* old = json->member("old"); old && !old->values.isEmpty())
        write.seenText = auditText(jsonOf(*old));
    return write;
}

Expected<RecipeOrder> readRecipeOrder(const QByteArray& body)
{
    const Expected<FlatJson> json = exchange::parseFlatJson(body);
    if (!json)
        return json.error();
    const Expected<QString> plc = textMember(*json, "plc");
    if (!plc)
        return plc.error();
    const JsonItem* const labels = json->member("labels");
    if (!labels || !labels->isList)
        return Error{QStringLiteral("\"labels\": a list of texts is expected")};
    RecipeOrder order{*plc, {}};
    for (const values::Value& value : labels->values) {
        const auto* label = std::get_if<QString>(&value);
        if (!label)
            return Error{QStringLiteral("\"labels\": a list of texts is expected")};
        order.labels.append(*label);
    }
    return order;
}

Expected<Login> readLogin(const QByteArray& body)
{
    const Expected<FlatJson> json = exchange::parseFlatJson(body);
    const QString* const user = json ? json->text("user") : nullptr;
    const QString* const password = json ? json->text("password") : nullptr;
    if (!user || !password)
        return Error{QStringLiteral("the texts \"user\" and \"password\" are expected")};
    return Login{*user, *password};
}

} // namespace plc::panel
