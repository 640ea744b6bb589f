#include "values/value_range.h"

#include <cmath>
#include <limits>
#include <type_traits>

namespace plc::values {
namespace {

/// Whether `value` is below (-1), at (0) or above (1) `bound`, which is a number.
template <typename Integer>
int compareInteger(Integer value, double bound)
{
    constexpr int kDigits = std::numeric_limits<Integer>::digits;
    if (bound >= std::ldexp(1.0, kDigits))
        return -1;
    if (bound < double(std::numeric_limits<Integer>::min()))
        return 1;
    const double whole = std::floor(bound);
    const auto integer = Integer(whole);
    if (value != integer)
        return value < integer ? -1 : 1;
    return whole < bound ? -1 : 0;
}

/// The bound as a value of this type has it: 0.1 is more than the limit 0.1 where it was written to
/// 32 bits. A bound that these cannot express, as 1e300 or 1e-50, stays what it is.
template <typename Number>
double boundAs(double bound)
{
    constexpr double kLargest = double(std::numeric_limits<Number>::max());
    if (std::abs(bound) > kLargest)
        return bound;
    const auto rounded = double(Number(bound));
    return rounded == 0 ? bound : rounded;
}

template <typename Number>
bool isInside(const Number& value, const ValueRange& range)
{
    if constexpr (std::is_same_v<Number, QString>) {
        Q_UNUSED(value)
        return !range.lowest && !range.highest;
    } else if constexpr (std::is_floating_point_v<Number>) {
        return (!range.lowest || double(value) >= boundAs<Number>(*range.lowest)) &&
               (!range.highest || double(value) <= boundAs<Number>(*range.highest));
    } else if constexpr (std::is_same_v<Number, bool>) {
        return isInside(qint64(value), range);
    } else {
        return (!range.lowest || compareInteger(value, *range.lowest) >= 0) &&
               (!range.highest || compareInteger(value, *range.highest) <= 0);
    }
}

} // namespace

bool ValueRange::contains(const Value& value) const
{
    return std::visit([this](const auto& held) { return isInside(held, *this); }, value);
}

QString ValueRange::text() const
{
    const auto bound = [](const std::optional<double>& number) {
        return number ? valueJson(Value(*number)) : QString();
    };
    return QStringLiteral("%1..%2").arg(bound(lowest), bound(highest));
}

} // namespace plc::values
