#ifndef PLC_BENCH_REPORT_TABLE_H
#define PLC_BENCH_REPORT_TABLE_H

#include "measurements.h"

namespace plc::bench {

/// Prints what the driver takes for each work, beside the baseline and the floor.
void printTable(const Measurements& measurements);

} // namespace plc::bench

#endif
