#ifndef PLC_BENCH_REPORT_REQUIREMENTS_H
#define PLC_BENCH_REPORT_REQUIREMENTS_H

#include "measurements.h"

namespace plc::bench {

/// Judges the run by the requirements in a file and prints each with what was measured. Returns
/// whether all are reached.
///
/// A requirement is a sum of measurements ("of"), divided by another ("per", 1 without it), that
/// is to be "atMost" or "atLeast" a number. Both sums give a weight to each benchmark's name.
bool checkRequirements(const Measurements& measurements, const QString& path);

} // namespace plc::bench

#endif
