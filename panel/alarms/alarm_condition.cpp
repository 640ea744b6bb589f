#include "panel/alarms/alarm_condition.h"

#include <cmath>
#include <optional>
#include <type_traits>

namespace plc::panel {

using values::Value;

namespace {

/// Below 0: a < b; 0: equal; above 0: a > b.
template <typename T>
int order(T a, T b)
{
    return int(a > b) - int(a < b);
}

// The next power of two above the range of a type; a double holds it exactly.
constexpr double kAboveSigned = 9223372036854775808.0;
constexpr double kAboveUnsigned = 18446744073709551616.0;

int orderOf(qint64 value, double limit)
{
    if (limit >= kAboveSigned)
        return -1;
    if (limit < -kAboveSigned)
        return 1;
    const double whole = std::floor(limit);
    const int ofWhole = order(value, qint64(whole));
    return ofWhole == 0 && limit > whole ? -1 : ofWhole;
}

int orderOf(quint64 value, double limit)
{
    if (limit >= kAboveUnsigned)
        return -1;
    if (limit < 0)
        return 1;
    const double whole = std::floor(limit);
    const int ofWhole = order(value, quint64(whole));
    return ofWhole == 0 && limit > whole ? -1 : ofWhole;
}

int orderOf(float value, double limit)
{
    return order(value, float(limit));
}

int orderOf(double value, double limit)
{
    return order(value, limit);
}

template <typename T>
constexpr bool kIsNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

/// Nothing: they cannot be compared.
std::optional<int> orderOf(const Value& value, double limit)
{
    return std::visit(
        [limit](const auto& held) -> std::optional<int> {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (!kIsNumber<Held>) {
                return {};
            } else {
                if constexpr (std::is_floating_point_v<Held>) {
                    if (std::isnan(held))
                        return {};
                }
                return orderOf(held, limit);
            }
        },
        value);
}

/// Whether two integers are the same, whatever their kinds; nothing: they are not two integers.
std::optional<bool> areSameIntegers(const Value& a, const Value& b)
{
    const auto* signedA = std::get_if<qint64>(&a);
    const auto* signedB = std::get_if<qint64>(&b);
    const auto* unsignedA = std::get_if<quint64>(&a);
    const auto* unsignedB = std::get_if<quint64>(&b);
    if ((!signedA && !unsignedA) || (!signedB && !unsignedB))
        return {};
    const bool isNegativeA = signedA && *signedA < 0;
    const bool isNegativeB = signedB && *signedB < 0;
    const quint64 bitsA = signedA ? quint64(*signedA) : *unsignedA;
    const quint64 bitsB = signedB ? quint64(*signedB) : *unsignedB;
    return isNegativeA == isNegativeB && bitsA == bitsB;
}

/// Of a number that is no truth value; a 64-bit integer as near as a double comes.
std::optional<double> numberOf(const Value& value)
{
    return std::visit(
        [](const auto& held) -> std::optional<double> {
            if constexpr (kIsNumber<std::decay_t<decltype(held)>>)
                return double(held);
            else
                return {};
        },
        value);
}

Verdict verdictOfState(const Value& state, const Value& value)
{
    std::optional<bool> isSame = areSameIntegers(state, value);
    if (!isSame && state.index() == value.index() && !numberOf(state))
        isSame = state == value;
    if (!isSame) {
        const std::optional<double> number = numberOf(state);
        const std::optional<int> found = number ? orderOf(value, *number) : std::nullopt;
        if (!found)
            return Verdict::NotComparable;
        isSame = *found == 0;
    }
    return *isSame ? Verdict::Holds : Verdict::Clear;
}

} // namespace

Verdict judge(const AlarmSettings& alarm, const Value& value)
{
    if (alarm.condition == AlarmSettings::Is)
        return verdictOfState(alarm.state, value);
    const int sign = alarm.condition == AlarmSettings::Above ? 1 : -1;
    const std::optional<int> beyondLimit = orderOf(value, alarm.limit);
    if (!beyondLimit)
        return Verdict::NotComparable;
    if (*beyondLimit * sign > 0)
        return Verdict::Holds;
    const std::optional<int> beyondBand = orderOf(value, alarm.limit - sign * alarm.deadband);
    return *beyondBand * sign > 0 ? Verdict::InDeadband : Verdict::Clear;
}

} // namespace plc::panel
