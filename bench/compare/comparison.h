#ifndef PLC_BENCH_COMPARE_COMPARISON_H
#define PLC_BENCH_COMPARE_COMPARISON_H

#include <QtCore/QString>

#include <chrono>
#include <vector>

#include "plant.h"
#include "recorder.h"

namespace plc::bench {

/// Those that are compared; the first three are this repository's host in several ways of use.
enum class Peer { Host, HostShortEntries, HostLabelsEach, Libmodbus, Qt, QtOneByOne };
QString nameOf(Peer peer);

struct ComparisonOptions {
    std::vector<Work> works;
    std::vector<int> delays; ///< Added round-trip times in milliseconds.
    int rounds = 5;
    std::chrono::milliseconds shortest{200}; ///< Of one measurement.
};

/// What one peer showed in all rounds of a work at a delay.
struct Result {
    Work work;
    int delay;
    Peer peer;
    std::vector<Measurement> rounds;
};

/// Lets all peers do all works, in turns.
std::vector<Result> compare(const ComparisonOptions& options);

/// Median over the rounds.
double medianOf(const Result& result, double (*valueOf)(const Measurement&));

double valuesPerSecond(const Measurement& measurement);
/// Of the client's process.
double processorTimePerValue(const Measurement& measurement);

/// A result's quantity as a multiple of what another peer shows at the same work and delay: the
/// median of the rounds' ratios, because in a round both are disturbed alike. 0 when the other has
/// no result.
double ratioTo(Peer other, const std::vector<Result>& results, const Result& result,
               double (*valueOf)(const Measurement&));

/// The result of a peer, or null.
const Result* find(const std::vector<Result>& results, Work work, int delay, Peer peer);

} // namespace plc::bench

#endif
