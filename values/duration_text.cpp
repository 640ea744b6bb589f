#include "values/duration_text.h"

#include <limits>

namespace plc::values {
namespace {

constexpr quint64 kMost = std::numeric_limits<quint64>::max();

struct Unit {
    const char* name;
    quint64 milliseconds;
};

constexpr quint64 kSecond = 1000; // ms
constexpr quint64 kMinute = 60 * kSecond;
constexpr quint64 kHour = 60 * kMinute;
constexpr quint64 kDay = 24 * kHour;

constexpr Unit kUnits[] = {{"d", kDay}, {"h", kHour}, {"m", kMinute}, {"s", kSecond}, {"ms", 1}};

/// Reads durations from the left to the right.
class DurationReader {
public:
    explicit DurationReader(const QString& text) : m_text(text.toLower()) {}

    bool skipPrefix()
    {
        for (const char* prefix : {"t#", "time#"}) {
            if (m_text.startsWith(QLatin1String(prefix))) {
                m_position = int(qstrlen(prefix));
                return true;
            }
        }
        return false;
    }
    bool atEnd() const { return m_position == int(m_text.size()); }

    /// A number with at most one point, without the single underscores between its digits.
    QString number()
    {
        QString number;
        while (!atEnd() && (isDigit(m_position) || is('.') || isBetweenDigits())) {
            if (!is('_'))
                number += m_text[m_position];
            ++m_position;
        }
        return number;
    }
    QString unit()
    {
        const int start = m_position;
        while (!atEnd() && !isDigit(m_position) && !is('_'))
            ++m_position;
        return m_text.mid(start, m_position - start);
    }
    /// A single underscore between a unit and the next number.
    void skipUnderscore()
    {
        if (!atEnd() && is('_') && isDigit(m_position + 1))
            ++m_position;
    }

private:
    bool is(char character) const { return m_text[m_position] == QLatin1Char(character); }
    bool isDigit(int position) const
    {
        return position >= 0 && position < int(m_text.size()) &&
               m_text[position] >= QLatin1Char('0') && m_text[position] <= QLatin1Char('9');
    }
    bool isBetweenDigits() const
    {
        return is('_') && isDigit(m_position - 1) && isDigit(m_position + 1);
    }

    const QString m_text;
    int m_position = 0;
};

int unitIndex(const QString& name)
{
    for (int i = 0; i < int(std::size(kUnits)); ++i) {
        if (name == QLatin1String(kUnits[i].name))
            return i;
    }
    return -1;
}

/// `digits` as a number; nothing when there are none or too many.
std::optional<quint64> wholeNumber(const QString& digits)
{
    bool ok = false;
    const quint64 number = digits.toULongLong(&ok, 10);
    return ok ? std::optional<quint64>(number) : std::nullopt;
}

/// Digits behind the point that are looked at; none of the units needs more.
constexpr int kFractionDigits = 9;

/// Milliseconds of the fraction of a unit with these digits, when they are whole.
std::optional<quint64> fractionOf(QString digits, quint64 unit)
{
    while (digits.size() > 1 && digits.endsWith(QLatin1Char('0')))
        digits.chop(1);
    const std::optional<quint64> number = wholeNumber(digits);
    if (!number || digits.size() > kFractionDigits)
        return {};
    quint64 parts = 1;
    for (int i = 0; i < int(digits.size()); ++i)
        parts *= 10;
    return *number * unit % parts == 0 ? std::optional<quint64>(*number * unit / parts)
                                       : std::nullopt;
}

/// Milliseconds of `number` units, when they are whole.
std::optional<quint64> scaled(const QString& number, quint64 unit)
{
    const int point = int(number.indexOf(QLatin1Char('.')));
    const std::optional<quint64> whole = wholeNumber(number.left(point));
    if (!whole || *whole > kMost / unit)
        return {};
    const quint64 milliseconds = *whole * unit;
    if (point < 0)
        return milliseconds;
    const std::optional<quint64> fraction = fractionOf(number.mid(point + 1), unit);
    if (!fraction || *fraction > kMost - milliseconds)
        return {};
    return milliseconds + *fraction;
}

} // namespace

QString durationText(quint64 milliseconds)
{
    if (milliseconds == 0)
        return QStringLiteral("T#0s");
    QString text = QStringLiteral("T#");
    for (const Unit& unit : kUnits) {
        const quint64 count = milliseconds / unit.milliseconds;
        milliseconds %= unit.milliseconds;
        if (count != 0)
            text += QString::number(count) + QLatin1String(unit.name);
    }
    return text;
}

std::optional<quint64> parseDuration(const QString& text)
{
    DurationReader reader(text);
    if (!reader.skipPrefix() || reader.atEnd())
        return {};
    quint64 total = 0;
    int lastUnit = -1;
    bool hadFraction = false;
    while (!reader.atEnd()) {
        const QString number = reader.number();
        const int index = unitIndex(reader.unit());
        if (hadFraction || index <= lastUnit)
            return {};
        const std::optional<quint64> part = scaled(number, kUnits[index].milliseconds);
        if (!part || *part > kMost - total)
            return {};
        total += *part;
        lastUnit = index;
        reader.skipUnderscore();
        hadFraction = number.contains(QLatin1Char('.'));
    }
    return total;
}

} // namespace plc::values
