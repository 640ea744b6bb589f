#ifndef PLC_TESTS_FAULTS_RUN_OPTIONS_H
#define PLC_TESTS_FAULTS_RUN_OPTIONS_H

#include <cstdint>
#include <string>

namespace plc {
namespace faults {

/// Which runs are made: as many as `runs` says, from the seed `firstSeed` on.
struct RunOptions {
    std::uint32_t runs = 30;
    std::uint32_t firstSeed = 1;
    std::string program; ///< As it was called.
};

inline RunOptions& runOptions()
{
    static RunOptions options;
    return options;
}

} // namespace faults
} // namespace plc

#endif
