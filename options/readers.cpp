#include "options/readers.h"

#include "values/duration_text.h"
#include "values/nearest_name.h"

namespace plc::options {
namespace {

/// Each 1024 times the one before.
const QString kSizeUnits = QStringLiteral("kmg");
constexpr int kBitsOfSizeUnit = 10;

/// Milliseconds; nothing if it is no duration.
std::optional<double> durationOf(const QString& text, double plain)
{
    if (const std::optional<quint64> whole = values::parseDuration(QStringLiteral("T#") + text))
        return double(*whole);
    const bool hasUnit = text.endsWith(QLatin1String("ms"), Qt::CaseInsensitive);
    bool ok = false;
    const double number = (hasUnit ? text.chopped(2) : text).toDouble(&ok);
    const double unit = hasUnit ? kMillisecond : plain;
    return ok && unit > 0 ? std::optional<double>(number * unit) : std::nullopt;
}

/// What a number without a unit means.
QString plainText(double plain)
{
    if (plain == kNoPlainNumber)
        return QString();
    return plain == kSecond ? QStringLiteral(" or a number of seconds")
                            : QStringLiteral(" or a number of ms");
}

template <typename Number>
Error outOfRange(const QString& name, const QString& written, Number lowest, Number highest)
{
    return Error{QStringLiteral("--%1 takes a number from %2 to %3, not %4")
                     .arg(name)
                     .arg(lowest)
                     .arg(highest)
                     .arg(values::quoted(written))};
}

Expected<qint64> parseSize(const Given& given)
{
    if (const std::optional<qint64> bytes = sizeOf(given.text()))
        return *bytes;
    return Error{QStringLiteral("--%1 takes a number of bytes such as 500k, 64M or 2G, not %2")
                     .arg(given.name, values::quoted(given.text()))};
}

} // namespace

Expected<qint64> parseInteger(const QString& name, const QString& text, qint64 lowest,
                              qint64 highest)
{
    bool ok = false;
    const qint64 value = text.toLongLong(&ok, 10);
    if (ok && value >= lowest && value <= highest)
        return value;
    return outOfRange(name, text, lowest, highest);
}

Expected<double> parseDuration(const Given& given, const DurationRange& range)
{
    const std::optional<double> value = durationOf(given.text(), range.plain);
    if (value && *value >= range.lowest && *value <= range.highest)
        return *value;
    return Error{QStringLiteral("--%1 takes a duration such as 500ms, 10s or 1m30s%2, from %3 to "
                                "%4, not %5")
                     .arg(given.name, plainText(range.plain),
                          values::durationText(quint64(std::ceil(range.lowest))).mid(2),
                          values::durationText(quint64(range.highest)).mid(2),
                          values::quoted(given.text()))};
}

std::optional<qint64> sizeOf(const QString& text)
{
    const int unit = text.isEmpty() ? -1 : int(kSizeUnits.indexOf(text.back().toLower()));
    bool ok = false;
    const qint64 count = (unit < 0 ? text : text.chopped(1)).toLongLong(&ok, 10);
    const int shift = kBitsOfSizeUnit * (unit + 1);
    const bool fits = ok && count > 0 && count <= (std::numeric_limits<qint64>::max() >> shift);
    return fits ? std::optional(count << shift) : std::nullopt;
}

Reader flag(bool* target)
{
    return [target](const Given&) -> Expected<void> {
        *target = true;
        return {};
    };
}

Reader text(QString* target)
{
    return [target](const Given& given) -> Expected<void> {
        *target = given.text();
        return {};
    };
}

Reader number(double* target, double lowest, double highest)
{
    return [target, lowest, highest](const Given& given) -> Expected<void> {
        bool ok = false;
        const double value = given.text().toDouble(&ok);
        if (!ok || !(value >= lowest && value <= highest))
            return outOfRange(given.name, given.text(), lowest, highest);
        *target = value;
        return {};
    };
}

Reader integers(QVector<int>* target, int lowest, int highest)
{
    return [target, lowest, highest](const Given& given) -> Expected<void> {
        for (const QString& written : given.values) {
            const Expected<qint64> value = parseInteger(given.name, written, lowest, highest);
            if (!value)
                return value.error();
            target->append(int(*value));
        }
        return {};
    };
}

Reader size(qint64* target)
{
    return [target](const Given& given) -> Expected<void> {
        const Expected<qint64> bytes = parseSize(given);
        if (!bytes)
            return bytes.error();
        *target = *bytes;
        return {};
    };
}

Reader duration(double* target, const DurationRange& range)
{
    return [target, range](const Given& given) -> Expected<void> {
        const Expected<double> value = parseDuration(given, range);
        if (!value)
            return value.error();
        *target = *value;
        return {};
    };
}

} // namespace plc::options
