#ifndef PLC_VALUES_VALUE_RANGE_H
#define PLC_VALUES_VALUE_RANGE_H

#include <optional>

#include "values/export.h"
#include "values/value_text.h"

namespace plc::values {

/// The largest integer below which a double holds each.
constexpr double kExactIntegers = 9007199254740992; // 2^53

/// What a number may be. Without bounds anything is inside, texts and NaN, too; with one, nothing
/// but numbers is.
struct PLC_HOST_EXPORT ValueRange {
    std::optional<double> lowest;
    std::optional<double> highest;

    /// Compares exactly: an integer beyond 2^53 is not rounded before. A value of 32 bits with a
    /// fraction is compared with the bounds as 32 bits have them, so that each bound is inside.
    bool contains(const Value& value) const;
    /// "-5..50", "..50", "-5.."
    QString text() const;
};

} // namespace plc::values

#endif
