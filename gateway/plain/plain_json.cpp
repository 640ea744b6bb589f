#include "gateway/plain/plain_json.h"

#include "exchange/flat_json.h"
#include "exchange/shown_unit.h"
#include "exchange/written_value.h"
#include "gateway/exchange/outcome_json.h"
#include "host/points/value_codec.h"
#include "values/nearest_name.h"
#include "values/utc_time.h"

namespace plc::gateway {
namespace {

constexpr int kLongestId = 100;

QString qualityWord(Quality quality)
{
    switch (quality) {
        case Quality::Good:
            return QStringLiteral("good");
        case Quality::Stale:
            return QStringLiteral("stale");
        case Quality::Bad:
            break;
    }
    return QStringLiteral("bad");
}

QString unitMember(const host::DataPoint& point)
{
    const QString unit = exchange::shownUnit(point);
    return unit.isEmpty() ? QString() : QStringLiteral(",\"unit\":") + values::jsonText(unit);
}

QString timeMember(qint64 time)
{
    return QStringLiteral(",\"time\":\"%1\"").arg(values::utcTimeText(time));
}

/// A text, or a whole number; nothing for anything else.
std::optional<QString> readId(const exchange::JsonItem& item)
{
    if (item.isList || item.values.size() != 1)
        return std::nullopt;
    const values::Value& value = item.values.first();
    if (const QString* text = std::get_if<QString>(&value))
        return int(text->size()) <= kLongestId ? std::optional<QString>(*text) : std::nullopt;
    if (std::holds_alternative<qint64>(value) || std::holds_alternative<quint64>(value))
        return values::valueJson(value);
    return std::nullopt;
}

Expected<QVector<values::Value>> readValues(const host::DataPoint& point,
                                            const exchange::JsonItem& item)
{
    if (item.values.isEmpty() && !item.isList)
        return Error{QStringLiteral("null is no value that can be written")};
    if (item.isList && point.elements == 1)
        return Error{QStringLiteral("one value is expected, no list")};
    if (!item.isList && point.elements > 1)
        return Error{QStringLiteral("a list of %1 values is expected").arg(point.elements)};
    return exchange::writtenValues(point, item.values);
}

Expected<void> readObject(const exchange::FlatJson& json, const exchange::JsonItem** value,
                          QString* id)
{
    for (const exchange::JsonMember& member : json.members) {
        if (member.key == QLatin1String("value")) {
            *value = &member.item;
        } else if (member.key == QLatin1String("id")) {
            const std::optional<QString> text = readId(member.item);
            if (!text) {
                return Error{QStringLiteral("an id is a whole number or a text of %1 characters "
                                            "at most")
                                 .arg(kLongestId)};
            }
            *id = *text;
        } else {
            return Error{QStringLiteral("%1 is unknown; \"value\" and \"id\" are expected")
                             .arg(values::quoted(member.key))};
        }
    }
    if (!*value)
        return Error{QStringLiteral("there is no \"value\"")};
    return {};
}

} // namespace

QByteArray valueMessage(const Metric& metric, const Sample& sample, bool isHistorical)
{
    const QString value =
        sample.bytes.isEmpty()
            ? QStringLiteral("null")
            : host::pointJson(metric.point, host::decodeValues(metric.point, sample.bytes));
    QString json = QStringLiteral("{\"value\":") + value + unitMember(metric.point) +
                   timeMember(sample.time) + QStringLiteral(",\"quality\":\"") +
                   qualityWord(sample.quality) + QLatin1Char('"');
    if (isHistorical)
        json += QStringLiteral(",\"historical\":true");
    return (json + QLatin1Char('}')).toUtf8();
}

QByteArray stateMessage(bool isOnline, qint64 time)
{
    const QString json = QStringLiteral("{\"online\":") +
                         (isOnline ? QStringLiteral("true") : QStringLiteral("false"));
    return (json + timeMember(time) + QLatin1Char('}')).toUtf8();
}

QByteArray nodeLostMessage()
{
    return "{\"online\":false}";
}

QByteArray nodeStateMessage(const NodeState& state, qint64 time)
{
    const QString json = QStringLiteral("{\"online\":true,\"version\":") +
                         values::jsonText(state.version) + QStringLiteral(",\"stored\":") +
                         QString::number(state.stored) + QStringLiteral(",\"dropped\":") +
                         QString::number(state.dropped);
    return (json + timeMember(time) + QLatin1Char('}')).toUtf8();
}

WriteRequest readWrite(const Metric& metric, const QByteArray& payload)
{
    WriteRequest request;
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(payload);
    if (!json) {
        request.error = json.error().text;
        return request;
    }
    const exchange::JsonItem* value = json->item ? &*json->item : nullptr;
    if (!value) {
        const Expected<void> read = readObject(*json, &value, &request.id);
        if (!read) {
            request.error = read.error().text;
            return request;
        }
    }
    const Expected<QVector<values::Value>> values = readValues(metric.point, *value);
    if (values)
        request.values = *values;
    else
        request.error = values.error().text;
    return request;
}

} // namespace plc::gateway
