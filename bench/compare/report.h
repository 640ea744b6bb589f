#ifndef PLC_BENCH_COMPARE_REPORT_H
#define PLC_BENCH_COMPARE_REPORT_H

#include "comparison.h"

namespace plc::bench {

/// Prints the table of all results.
void printTable(const std::vector<Result>& results);

/// Writes all results, with the medians and every round, as JSON.
void writeJson(const std::vector<Result>& results, const QString& path);

} // namespace plc::bench

#endif
