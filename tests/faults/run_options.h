#ifndef PLC_TESTS_FAULTS_RUN_OPTIONS_H
#define PLC_TESTS_FAULTS_RUN_OPTIONS_H

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

/// Without --runs; programs whose runs take long make fewer.
#ifndef PLC_FAULT_RUNS
#define PLC_FAULT_RUNS 30
#endif

namespace plc::faults {

/// Which runs are made: as many as `runs` says, from the seed `firstSeed` on.
struct RunOptions {
    std::uint32_t runs = PLC_FAULT_RUNS;
    std::uint32_t firstSeed = 1;
    std::string program; ///< As it was called.
};

inline RunOptions& runOptions()
{
    static RunOptions options;
    return options;
}

/// The seeds of these runs.
inline std::vector<std::uint32_t> seedsOfRuns()
{
    std::vector<std::uint32_t> seeds(runOptions().runs);
    std::iota(seeds.begin(), seeds.end(), runOptions().firstSeed);
    return seeds;
}

/// The seeds of those among them that are also made with programs, which take seconds each.
inline std::vector<std::uint32_t> seedsOfProcesses()
{
    constexpr std::uint32_t kRunsForEach = 100;
    std::vector<std::uint32_t> seeds((runOptions().runs + kRunsForEach - 1) / kRunsForEach);
    std::iota(seeds.begin(), seeds.end(), runOptions().firstSeed);
    return seeds;
}

} // namespace plc::faults

#endif
