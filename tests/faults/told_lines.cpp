#include "faults/told_lines.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace plc::faults {
namespace {

/// "F.name[0]*300" names the array "name".
std::optional<Array> arrayOf(const QString& label)
{
    const QString name = label.mid(2).section(QLatin1Char('['), 0, 0);
    const auto found =
        std::find_if(kStampedArrays.begin(), kStampedArrays.end(),
                     [&name](const Array& array) { return name == QLatin1String(array.name); });
    return found == kStampedArrays.end() ? std::nullopt : std::optional<Array>(*found);
}

values::Value valueOf(const Array& array, const QJsonValue& json)
{
    if (array.type == Array::Bit)
        return json.toBool();
    return quint64(json.toDouble());
}

std::optional<ToldValue> toldByJson(const QJsonObject& line)
{
    const std::optional<Array> array = arrayOf(line.value(QLatin1String("label")).toString());
    const QJsonValue json = line.value(QLatin1String("value"));
    if (!array || json.isNull() || json.isUndefined())
        return std::nullopt;
    ToldValue told{*array, {}, 0};
    if (!json.isArray())
        told.values.append(valueOf(*array, json));
    for (const QJsonValue& element : json.toArray())
        told.values.append(valueOf(*array, element));
    return told;
}

} // namespace

std::optional<ToldValue> toldByRun(const QByteArray& line)
{
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    if (object.value(QLatin1String("event")).toString() != QLatin1String("value"))
        return std::nullopt;
    std::optional<ToldValue> told = toldByJson(object);
    if (told) {
        const QDateTime time = QDateTime::fromString(object.value(QLatin1String("time")).toString(),
                                                     Qt::ISODateWithMs);
        told->readAt =
            time.toMSecsSinceEpoch() - qint64(object.value(QLatin1String("age")).toDouble());
    }
    return told;
}

std::optional<ToldValue> toldByRead(const QByteArray& line, qint64 startedAt)
{
    std::optional<ToldValue> told = toldByJson(QJsonDocument::fromJson(line).object());
    if (told)
        told->readAt = startedAt;
    return told;
}

/// TIME,LABEL,VALUE,STATE, where a value of several elements is "[1, 2, 3]".
std::optional<ToldValue> toldByLog(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line).remove(QLatin1Char('"'));
    const QString value =
        text.section(QLatin1Char(','), 2).section(QLatin1Char(','), 0, -2).trimmed();
    const std::optional<Array> array = arrayOf(text.section(QLatin1Char(','), 1, 1));
    if (!array || value.isEmpty())
        return std::nullopt;
    ToldValue told{*array, {}, 0};
    const QStringList elements =
        QString(value).remove(QLatin1Char('[')).remove(QLatin1Char(']')).split(QLatin1Char(','));
    for (const QString& element : elements) {
        if (array->type == Array::Bit)
            told.values.append(element.trimmed() == QLatin1String("TRUE"));
        else
            told.values.append(quint64(element.trimmed().toULongLong()));
    }
    // A record that only tells that the value has become stale says no more of its age.
    if (!text.endsWith(QLatin1String(",stale"))) {
        told.readAt = QDateTime::fromString(text.section(QLatin1Char(','), 0, 0), Qt::ISODateWithMs)
                          .toMSecsSinceEpoch();
    }
    return told;
}

} // namespace plc::faults
