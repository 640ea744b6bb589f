#include "recorder/deadband.h"

#include <cmath>

namespace plc::recorder {

bool isOutsideDeadband(const SeriesDescription& series, const Sample& last, const Sample& sample)
{
    if (last.quality != sample.quality)
        return true;
    const SeriesNumbers numbers(series);
    const std::optional<double> before = numbers.number(last.bytes);
    const std::optional<double> number = numbers.number(sample.bytes);
    if (!before || !number)
        return last.bytes != sample.bytes;
    return std::abs(*number - *before) >= series.deadband;
}

} // namespace plc::recorder
