#include "gateway/sparkplug/primary_host.h"

#include "exchange/flat_json.h"

namespace plc::gateway {
namespace {

std::optional<bool> truthValue(const exchange::JsonItem* item)
{
    if (!item || item->isList || item->values.isEmpty())
        return std::nullopt;
    const bool* value = std::get_if<bool>(&item->values.first());
    return value ? std::optional<bool>(*value) : std::nullopt;
}

/// Milliseconds: a whole number, also where it is written as a fraction (1.7e12).
std::optional<quint64> wholeNumber(const exchange::JsonItem* item)
{
    constexpr double kExact = 9007199254740992.0; // 2^53
    if (!item || item->isList || item->values.isEmpty())
        return std::nullopt;
    const values::Value& value = item->values.first();
    if (const qint64* number = std::get_if<qint64>(&value))
        return *number >= 0 ? std::optional<quint64>(quint64(*number)) : std::nullopt;
    if (const quint64* number = std::get_if<quint64>(&value))
        return *number;
    if (const double* number = std::get_if<double>(&value)) {
        if (*number >= 0 && *number <= kExact && double(quint64(*number)) == *number)
            return quint64(*number);
    }
    return std::nullopt;
}

} // namespace

void PrimaryHost::forget()
{
    *this = PrimaryHost();
}

QString PrimaryHost::received(const QByteArray& payload)
{
    const Expected<exchange::FlatJson> json = exchange::parseFlatJson(payload);
    if (!json)
        return json.error().text;
    const std::optional<bool> isOnline = truthValue(json->member("online"));
    if (!isOnline)
        return QStringLiteral("it has no \"online\" of true or false");
    const std::optional<quint64> time = wholeNumber(json->member("timestamp"));
    if (!time)
        return QStringLiteral("it has no \"timestamp\" of whole milliseconds");
    tell(*isOnline, *time);
    return QString();
}

void PrimaryHost::tell(bool isOnline, quint64 time)
{
    const std::optional<quint64> before = isOnline ? m_lastTime : m_onlineTime;
    if (before && time < *before)
        return;
    m_lastTime = qMax(time, m_lastTime.value_or(0));
    m_isOnline = isOnline;
    if (isOnline)
        m_onlineTime = time;
    else
        m_hasLeft = true;
}

} // namespace plc::gateway
