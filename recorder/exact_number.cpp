#include "recorder/exact_number.h"

#include <type_traits>

#include "values/numeric_value.h"

namespace plc::recorder {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 2 * kTwoTo63;

/// Modulo 2^64, which the nearest double of the largest one is.
quint64 wholeOf(double number)
{
    if (number >= kTwoTo64)
        return 0;
    return number < kTwoTo63 ? quint64(qint64(number)) : quint64(number);
}

quint64 wholeOf(const ExactNumber& number)
{
    return wholeOf(number.nearest) + quint64(qint64(number.rest));
}

} // namespace

std::optional<ExactNumber> exactNumber(const values::Value& value)
{
    const std::optional<double> nearest = values::numericValue(value);
    if (!nearest)
        return {};
    return std::visit(
        [&nearest](const auto& held) -> ExactNumber {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, qint64> || std::is_same_v<Held, quint64>)
                return {*nearest, qint16(qint64(quint64(held) - wholeOf(*nearest)))};
            else
                return {*nearest, 0};
        },
        value);
}

values::Value valueOf(const values::IecType& type, const ExactNumber& number)
{
    switch (type.format) {
        case values::ValueFormat::Boolean:
            return number.nearest != 0;
        case values::ValueFormat::Signed:
            return qint64(wholeOf(number));
        case values::ValueFormat::Unsigned:
        case values::ValueFormat::Hexadecimal:
        case values::ValueFormat::Duration:
            return wholeOf(number);
        case values::ValueFormat::Real:
            if (type.size == int(sizeof(float)))
                return float(number.nearest);
            break;
        case values::ValueFormat::Text:
        case values::ValueFormat::WideText:
            break;
    }
    return number.nearest;
}

} // namespace plc::recorder
