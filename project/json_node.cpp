#include "project/json_node.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <cmath>

#include "values/nearest_name.h"

namespace plc::project {
namespace {

/// A key as it stands in a JSON pointer.
QString pointerToken(QString key)
{
    key.replace(QLatin1String("~"), QLatin1String("~0"));
    key.replace(QLatin1String("/"), QLatin1String("~1"));
    const QString printable = values::quoted(key);
    return printable.mid(1, printable.size() - 2);
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

void JsonNode::failExpecting(const QString& expected) const
{
    fail(QStringLiteral("found %1, expected %2").arg(shown(), expected));
}

void JsonNode::checkKeys(const QStringList& required, const QStringList& optional) const
{
    if (!m_value.isObject()) {
        failExpecting(QStringLiteral("an object"));
        return;
    }
    const QStringList known = required + optional;
    const QStringList keys = m_value.toObject().keys();
    for (const QString& key : keys) {
        if (known.contains(key))
            continue;
        m_errors->report(m_path + QLatin1Char('/') + pointerToken(key),
                         QStringLiteral("unknown key %1%2, expected one of %3")
                             .arg(values::quoted(key), values::nearestNameHint(key, known),
                                  known.join(QLatin1String(", "))));
        return;
    }
    for (const QString& key : required) {
        if (!keys.contains(key)) {
            fail(QStringLiteral("key %1 is missing").arg(values::quoted(key)));
            return;
        }
    }
}

bool JsonNode::has(const char* key) const
{
    return m_value.toObject().contains(QLatin1String(key));
}

JsonNode JsonNode::member(const char* key) const
{
    const QString name = QString::fromLatin1(key);
    return {m_value.toObject().value(name), m_path + QLatin1Char('/') + name, m_errors};
}

QVector<JsonNode> JsonNode::elements() const
{
    QVector<JsonNode> nodes;
    if (!m_value.isArray()) {
        failExpecting(QStringLiteral("a list"));
        return nodes;
    }
    const QJsonArray array = m_value.toArray();
    nodes.reserve(array.size());
    for (int index = 0; index < int(array.size()); ++index)
        nodes.append(
            {array.at(index), m_path + QLatin1Char('/') + QString::number(index), m_errors});
    return nodes;
}

QString JsonNode::text() const
{
    if (!m_value.isString())
        failExpecting(QStringLiteral("a text"));
    return m_value.toString();
}

bool JsonNode::boolean() const
{
    if (!m_value.isBool())
        failExpecting(QStringLiteral("true or false"));
    return m_value.toBool();
}

qint64 JsonNode::integer(qint64 minimum, qint64 maximum) const
{
    const double number = m_value.toDouble();
    if (!m_value.isDouble() || number != std::floor(number) || number < double(minimum) ||
        number > double(maximum)) {
        failExpecting(QStringLiteral("a whole number from %1 to %2").arg(minimum).arg(maximum));
        return minimum;
    }
    return qint64(number);
}

double JsonNode::number() const
{
    if (!m_value.isDouble())
        failExpecting(QStringLiteral("a number"));
    return m_value.toDouble();
}

QString JsonNode::shown() const
{
    switch (m_value.type()) {
        case QJsonValue::Null:
            return QStringLiteral("null");
        case QJsonValue::Bool:
            return m_value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        case QJsonValue::Double:
            return QString::number(m_value.toDouble(), 'g', 15);
        case QJsonValue::String:
            return values::quoted(m_value.toString());
        case QJsonValue::Array:
            return QStringLiteral("a list");
        case QJsonValue::Object:
            return QStringLiteral("an object");
        case QJsonValue::Undefined:
            break;
    }
    return QStringLiteral("nothing");
}

} // namespace plc::project
