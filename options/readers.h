#ifndef PLC_OPTIONS_READERS_H
#define PLC_OPTIONS_READERS_H

#include <cmath>
#include <limits>
#include <optional>

#include "options/option.h"

namespace plc::options {

// Each reader writes into a variable that outlives the table. What is not given leaves its variable
// as it is.

Reader flag(bool* target);
Reader text(QString* target);
Reader number(double* target, double lowest, double highest);
/// Each time that the option is given.
Reader integers(QVector<int>* target, int lowest, int highest);
/// Bytes, such as 500k, 64M or 2G, each unit 1024 times the one before; above 0.
Reader size(qint64* target);

/// Which durations an option takes.
struct DurationRange {
    double plain; ///< ms of a number without a unit; 0: it needs one.
    double lowest;
    double highest;
};

/// Of times that must not be 0, which is without end to some of them.
constexpr double kAboveZero = std::numeric_limits<double>::min();
constexpr double kMillisecond = 1;
constexpr double kSecond = 1000; // ms
constexpr double kNoPlainNumber = 0;

/// Milliseconds of a duration such as 500ms, 10s or 1m30s, or of a number of `plain` ms, which may
/// have a fraction.
Reader duration(double* target, const DurationRange& range);

// The values themselves, for readers of more than one of them.

Expected<qint64> parseInteger(const QString& name, const QString& text, qint64 lowest,
                              qint64 highest);
Expected<double> parseDuration(const Given& given, const DurationRange& range);
/// Bytes of "500k", "64M", "2G" or a plain number; nothing if it is no such text or 0.
std::optional<qint64> sizeOf(const QString& text);

/// A whole number for a variable of any type that holds such.
template <typename Target>
Reader integer(Target* target, qint64 lowest, qint64 highest)
{
    return [target, lowest, highest](const Given& given) -> Expected<void> {
        const Expected<qint64> value = parseInteger(given.name, given.text(), lowest, highest);
        if (!value)
            return value.error();
        *target = Target(*value);
        return {};
    };
}

/// A duration in whole milliseconds, of which a fraction counts as one.
template <typename Target>
Reader milliseconds(Target* target, const DurationRange& range)
{
    return [target, range](const Given& given) -> Expected<void> {
        const Expected<double> value = parseDuration(given, range);
        if (!value)
            return value.error();
        *target = Target(std::ceil(*value));
        return {};
    };
}

} // namespace plc::options

#endif
