#include <gtest/gtest.h>

#include "model/run_options.h"
#include "model/shrinking.h"
#include "model/step_generator.h"
#include "model/step_text.h"

namespace plc::model {
namespace {

constexpr std::size_t kStepsOfSequence = 300;

class RandomSequences : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomSequences, DriverDoesWhatTheModelDoes)
{
    const RunOptions& options = runOptions();
    const std::size_t steps = options.steps / options.seeds.size();
    StepGenerator generator(GetParam());
    std::size_t done = 0;
    while (done < steps) {
        const Sequence sequence = generator.sequence(kStepsOfSequence);
        done += sequence.size();
        if (!findDifference(sequence))
            continue;
        const Sequence shrunk = shrink(sequence);
        FAIL() << "Seed " << GetParam() << " after " << done << " steps. What differs:\n"
               << findDifference(shrunk).difference << "Test to paste:\n"
               << testText(withReplyBytes(shrunk));
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, RandomSequences, ::testing::ValuesIn(runOptions().seeds),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace plc::model
