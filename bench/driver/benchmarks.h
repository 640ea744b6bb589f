#ifndef PLC_BENCH_BENCHMARKS_H
#define PLC_BENCH_BENCHMARKS_H

namespace plc::bench {

// Each registers the benchmarks of one topic, named WORK/PARAMETERS.../WHO: who is the driver, the
// baseline, or the floor.
void registerValueBenchmarks();
void registerResolutionBenchmarks();
void registerCycleBenchmarks();
void registerRebuildBenchmarks();
void registerOneShotBenchmarks();
void registerImageMemoryBenchmarks();
void registerChosenInputBenchmarks();

/// Whether the baseline does the same work as the driver; says what differs.
bool baselineAgrees();

} // namespace plc::bench

#endif
