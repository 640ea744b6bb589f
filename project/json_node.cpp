#include "project/json_node.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <cmath>

#include "values/nearest_name.h"

namespace plc::project {
namespace {

bool contains(const JsonKeys& keys, std::string_view key)
{
    return std::any_of(keys.begin(), keys.end(),
                       [key](std::string_view each) { return isSameKey(each, key); });
}

QString textOf(std::string_view key)
{
    return QString::fromLatin1(key.data(), int(key.size()));
}

void reportUnknown(const JsonNode& node, const QString& key, const JsonKeys& required,
                   const JsonKeys& optional)
{
    QStringList known;
    for (const JsonKeys* keys : {&required, &optional}) {
        for (std::string_view each : *keys)
            known.append(textOf(each));
    }
    node.errors()->report(node.path() + QLatin1Char('/') + pointerToken(key),
                          QStringLiteral("unknown key %1%2, expected one of %3")
                              .arg(values::quoted(key), values::nearestNameHint(key, known),
                                   known.join(QLatin1String(", "))));
}

} // namespace

void DocumentErrors::report(const QString& path, const QString& text)
{
    if (!m_first.isEmpty())
        return;
    m_first = m_documentName + QLatin1String(": ");
    if (!path.isEmpty())
        m_first += path + QLatin1String(": ");
    m_first += text;
}

QString JsonNode::path() const
{
    const QString path = m_place.path();
    return m_missingKey.empty() ? path : path + QLatin1Char('/') + textOf(m_missingKey);
}

void JsonNode::fail(const QString& text) const
{
    if (m_errors->isEmpty())
        m_errors->report(path(), text);
}

void JsonNode::failExpecting(const QString& expected) const
{
    fail(QStringLiteral("found %1, expected %2").arg(shown(), expected));
}

int JsonNode::checkKeys(const JsonKeys& required, const JsonKeys& optional) const
{
    const JsonValue object = value();
    if (!object.isObject()) {
        failExpecting(QStringLiteral("an object"));
        return 0;
    }
    QStringList unknown;
    std::size_t found = 0; // No key stands twice in an object.
    int others = 0;
    const JsonValue end = object.end();
    for (JsonValue key = object.first(); key != end; key = key.nextKey()) {
        const bool isRequired = contains(required, key.utf8());
        found += isRequired ? 1 : 0;
        others += isRequired ? 0 : 1;
        if (!isRequired && !contains(optional, key.utf8()))
            unknown.append(key.text());
    }
    if (!unknown.isEmpty()) {
        // Whichever comes first in the file: the same document, its lines in another order, is told
        // the same.
        reportUnknown(*this, *std::min_element(unknown.begin(), unknown.end()), required, optional);
    } else if (found < required.size()) {
        const auto missing = std::find_if(required.begin(), required.end(),
                                          [this](std::string_view key) { return !has(key); });
        fail(QStringLiteral("key %1 is missing").arg(values::quoted(textOf(*missing))));
    }
    return others;
}

JsonNode JsonNode::member(std::string_view key) const
{
    const JsonValue found = value().member(key);
    JsonNode node(found, m_errors);
    if (found.isMissing()) {
        node.m_place = m_place;
        node.m_missingKey = key;
    }
    return node;
}

JsonNode::Elements JsonNode::elements() const
{
    if (value().isList())
        return {m_place, m_errors};
    failExpecting(QStringLiteral("a list"));
    return {JsonValue(), m_errors};
}

int JsonNode::Elements::size() const
{
    int size = 0;
    for (Iterator each = begin(); each != end(); ++each)
        ++size;
    return size;
}

QString JsonNode::text() const
{
    if (!value().isText())
        failExpecting(QStringLiteral("a text"));
    return value().text();
}

bool JsonNode::boolean() const
{
    if (value().type() != JsonValue::Type::Boolean)
        failExpecting(QStringLiteral("true or false"));
    return value().boolean();
}

qint64 JsonNode::integer(qint64 minimum, qint64 maximum) const
{
    const JsonValue found = value();
    const double number = found.number();
    if (found.type() != JsonValue::Type::Number || number != std::floor(number) ||
        number < double(minimum) || number > double(maximum)) {
        failExpecting(QStringLiteral("a whole number from %1 to %2").arg(minimum).arg(maximum));
        return minimum;
    }
    return qint64(number);
}

double JsonNode::number() const
{
    if (value().type() != JsonValue::Type::Number)
        failExpecting(QStringLiteral("a number"));
    return value().number();
}

QString JsonNode::shown() const
{
    const JsonValue shown = value();
    switch (shown.type()) {
        case JsonValue::Type::Null:
            return QStringLiteral("null");
        case JsonValue::Type::Boolean:
            return shown.boolean() ? QStringLiteral("true") : QStringLiteral("false");
        case JsonValue::Type::Number:
            return QString::number(shown.number(), 'g', 15);
        case JsonValue::Type::Text:
            return values::quoted(shown.text());
        case JsonValue::Type::List:
            return QStringLiteral("a list");
        case JsonValue::Type::Object:
            return QStringLiteral("an object");
        case JsonValue::Type::Missing:
            break;
    }
    return QStringLiteral("nothing");
}

std::optional<JsonNode> OptionalMembers::take(std::string_view key)
{
    if (m_left == 0)
        return {};
    const JsonNode member = m_object.member(key);
    if (member.value().isMissing())
        return {};
    --m_left;
    return member;
}

} // namespace plc::project
