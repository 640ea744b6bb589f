#include "gateway/config/config_text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

#include <algorithm>

namespace plc::gateway {
namespace {

const char* const kKeyOrder[] = {
    "$schema",  "group",     "node",         "format", "retain",      "primaryHost",
    "brokers",  "keepAlive", "store",        "audit",  "metrics",     "status",
    "devices",  "name",      "project",      "host",   "address",     "port",
    "protocol", "user",      "passwordFile", "tls",    "authorities", "certificate",
    "key",      "file",      "size",         "rate",   "listen",      "socket",
    "labels",   "cycle",     "deadband",     "lowest", "highest",     "writable"};

int rank(const QString& key)
{
    const auto found =
        std::find_if(std::begin(kKeyOrder), std::end(kKeyOrder),
                     [&key](const char* each) { return key == QLatin1String(each); });
    return int(found - std::begin(kKeyOrder));
}

QStringList orderedKeys(const QJsonObject& object)
{
    QStringList keys = object.keys();
    std::stable_sort(keys.begin(), keys.end(),
                     [](const QString& a, const QString& b) { return rank(a) < rank(b); });
    return keys;
}

QByteArray scalarText(const QJsonValue& value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return list.mid(1, list.size() - 2);
}

QByteArray lineText(const QJsonValue& value);

QByteArray memberText(const QString& key, const QByteArray& value)
{
    return scalarText(key) + ": " + value;
}

/// The value in one line.
QByteArray lineText(const QJsonValue& value)
{
    QByteArrayList parts;
    if (value.isArray()) {
        const QJsonArray list = value.toArray();
        for (int i = 0; i < int(list.size()); ++i)
            parts.append(lineText(list.at(i)));
        return '[' + parts.join(", ") + ']';
    }
    if (!value.isObject())
        return scalarText(value);
    const QJsonObject object = value.toObject();
    for (const QString& key : orderedKeys(object))
        parts.append(memberText(key, lineText(object.value(key))));
    return '{' + parts.join(", ") + '}';
}

/// A list of objects, each in a line of its own.
QByteArray listText(const QJsonArray& list)
{
    QByteArrayList lines;
    for (const QJsonValue& element : list)
        lines.append("    " + lineText(element));
    return "[\n" + lines.join(",\n") + "\n  ]";
}

} // namespace

QByteArray configText(const QJsonObject& configuration)
{
    QByteArrayList lines;
    for (const QString& key : orderedKeys(configuration)) {
        const QJsonValue value = configuration.value(key);
        lines.append(
            "  " + memberText(key, value.isArray() ? listText(value.toArray()) : lineText(value)));
    }
    return "{\n" + lines.join(",\n") + "\n}\n";
}

} // namespace plc::gateway
