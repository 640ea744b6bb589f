#include "exchange/flat_json.h"

#include <simdjson.h>

#include <string_view>

#include "values/nearest_name.h"

namespace plc::exchange {
namespace {

namespace dom = simdjson::dom;

/// An object of lists of values.
constexpr size_t kDepth = 3;
/// Keys are looked up one by one.
constexpr int kMostMembers = 16;

QString qString(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), int(utf8.size()));
}

Expected<values::Value> scalar(const dom::element& element)
{
    switch (element.type()) {
        case dom::element_type::BOOL:
            return values::Value(bool(element));
        case dom::element_type::INT64:
            return values::Value(qint64(std::int64_t(element)));
        case dom::element_type::UINT64:
            return values::Value(quint64(std::uint64_t(element)));
        case dom::element_type::DOUBLE:
            return values::Value(double(element));
        case dom::element_type::STRING:
            return values::Value(qString(std::string_view(element)));
        default:
            return Error{QStringLiteral("lists and objects are nested too deeply")};
    }
}

Expected<JsonItem> readItem(const dom::element& element)
{
    JsonItem item;
    if (element.is_null())
        return item;
    item.isList = element.is_array();
    if (!item.isList) {
        const Expected<values::Value> value = scalar(element);
        if (!value)
            return value.error();
        item.values.append(*value);
        return item;
    }
    for (const dom::element entry : dom::array(element)) {
        const Expected<values::Value> value = scalar(entry);
        if (!value)
            return value.error();
        item.values.append(*value);
    }
    return item;
}

Expected<FlatJson> readMembers(const dom::object& object)
{
    FlatJson json;
    for (const dom::key_value_pair field : object) {
        const QString key = qString(field.key);
        for (const JsonMember& other : json.members) {
            if (other.key == key)
                return Error{QStringLiteral("%1 stands twice").arg(values::quoted(key))};
        }
        if (int(json.members.size()) == kMostMembers)
            return Error{QStringLiteral("an object has more than %1 members").arg(kMostMembers)};
        const Expected<JsonItem> item = readItem(field.value);
        if (!item)
            return item.error();
        json.members.append(JsonMember{key, *item});
    }
    return json;
}

} // namespace

const JsonItem* FlatJson::member(const char* key) const
{
    for (const JsonMember& member : members) {
        if (member.key == QLatin1String(key))
            return &member.item;
    }
    return nullptr;
}

const QString* FlatJson::text(const char* key) const
{
    const JsonItem* const found = member(key);
    return found && !found->isList && found->values.size() == 1
               ? std::get_if<QString>(&found->values.first())
               : nullptr;
}

Expected<FlatJson> parseFlatJson(const QByteArray& json)
{
    if (json.size() > kMostBytesOfJson)
        return Error{QStringLiteral("more than %1 bytes of JSON").arg(kMostBytesOfJson)};
    dom::parser parser(size_t(kMostBytesOfJson) + 1);
    dom::element root;
    simdjson::error_code error = parser.allocate(size_t(json.size()) + 1, kDepth);
    if (error == simdjson::SUCCESS)
        error = parser.parse(json.constData(), size_t(json.size())).get(root);
    if (error != simdjson::SUCCESS) {
        return Error{QStringLiteral("no JSON that can be read: %1")
                         .arg(QLatin1String(simdjson::error_message(error)))};
    }
    if (root.is_object())
        return readMembers(dom::object(root));
    const Expected<JsonItem> item = readItem(root);
    if (!item)
        return item.error();
    FlatJson result;
    result.item = *item;
    return result;
}

} // namespace plc::exchange
