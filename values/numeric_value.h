#ifndef PLC_VALUES_NUMERIC_VALUE_H
#define PLC_VALUES_NUMERIC_VALUE_H

#include <cmath>
#include <optional>
#include <type_traits>

#include "values/value_text.h"

namespace plc::values {

/// The value as a number, TRUE as 1, large integers as near as a double comes; nothing for texts,
/// infinities and NaN.
inline std::optional<double> numericValue(const Value& value)
{
    return std::visit(
        [](const auto& held) -> std::optional<double> {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, QString>) {
                return {};
            } else {
                const double number = double(held);
                return std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
            }
        },
        value);
}

} // namespace plc::values

#endif
