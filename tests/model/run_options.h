#ifndef PLC_TESTS_MODEL_RUN_OPTIONS_H
#define PLC_TESTS_MODEL_RUN_OPTIONS_H

#include <cstdint>
#include <vector>

namespace plc::model {

/// How much the random sequences do.
struct RunOptions {
    /// Steps over all seeds together.
    std::uint32_t steps = 20000;
    std::vector<std::uint32_t> seeds = {1, 2, 3, 4, 5, 6, 7, 8};
};

inline RunOptions& runOptions()
{
    static RunOptions options;
    return options;
}

} // namespace plc::model

#endif
