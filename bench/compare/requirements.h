#ifndef PLC_BENCH_COMPARE_REQUIREMENTS_H
#define PLC_BENCH_COMPARE_REQUIREMENTS_H

#include "comparison.h"

namespace plc::bench {

/// Prints for each requirement that the results are about whether it is reached. Returns whether
/// all are.
bool checkRequirements(const std::vector<Result>& results);

} // namespace plc::bench

#endif
