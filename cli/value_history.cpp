#include "cli/value_history.h"

#include <algorithm>

#include "values/numeric_value.h"

namespace plc::cli {
namespace {

constexpr qint64 kSecond = 1000; // ms
constexpr ushort kLowestBar = 0x2581;
constexpr int kBars = 8;

/// 0 to kBars - 1
int blockOf(double number, double lowest, double highest)
{
    // Halves, as the difference of two numbers may be more than a double holds.
    const double range = highest / 2 - lowest / 2;
    if (range <= 0)
        return 0;
    const double share = (number / 2 - lowest / 2) / range;
    return qBound(0, int(share * kBars), kBars - 1);
}

} // namespace

void ValueHistory::note(const values::Value& value, qint64 now)
{
    const std::optional<double> number = values::numericValue(value);
    if (!number)
        return;
    const qint64 second = now / kSecond;
    m_trend[int(second % kTrendSeconds)] = {second, *number};
    if (!m_lowest || *number < *values::numericValue(*m_lowest))
        m_lowest = value;
    if (!m_highest || *number > *values::numericValue(*m_highest))
        m_highest = value;
}

void ValueHistory::forgetRange()
{
    m_lowest.reset();
    m_highest.reset();
}

QVector<std::optional<double>> ValueHistory::trend(int seconds, qint64 now) const
{
    QVector<std::optional<double>> numbers;
    const qint64 newest = now / kSecond;
    for (qint64 index = newest - qMin(seconds, kTrendSeconds) + 1; index <= newest; ++index) {
        const Second second = index < 0 ? Second() : m_trend[int(index % kTrendSeconds)];
        const bool wasRead = index >= 0 && second.index == index;
        numbers.append(wasRead ? std::optional<double>(second.number) : std::nullopt);
    }
    return numbers;
}

QString sparkline(const QVector<std::optional<double>>& numbers)
{
    QVector<double> known;
    for (const std::optional<double>& number : numbers) {
        if (number)
            known.append(*number);
    }
    if (known.isEmpty())
        return QString(int(numbers.size()), QLatin1Char(' '));
    const auto [lowest, highest] = std::minmax_element(known.constBegin(), known.constEnd());
    QString line;
    for (const std::optional<double>& number : numbers) {
        line += number ? QChar(ushort(kLowestBar + blockOf(*number, *lowest, *highest)))
                       : QChar(QLatin1Char(' '));
    }
    return line;
}

} // namespace plc::cli
