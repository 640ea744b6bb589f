#ifndef PLC_BENCH_REPORT_STORED_RATIOS_H
#define PLC_BENCH_REPORT_STORED_RATIOS_H

#include "measurements.h"

namespace plc::bench {

/// Compares the run with the ratios that an earlier one stored, work by work: driver to floor (or
/// to the baseline where there is no floor), and allocations a call. Returns whether none has
/// become worse by more than the tolerance that stands in the file.
bool compareWithStored(const Measurements& measurements, const QString& path);

/// Puts the ratios of this run into the file, in place of those of the same Qt version.
void storeRatios(const Measurements& measurements, const QString& path);

} // namespace plc::bench

#endif
