// Seeded runs of a host and a PLC whose memory is another one in each reply, so that each value
// that the host shows, and each outcome that it tells, can be held against what the PLC did.

#include <gtest/gtest.h>

#include "faults/run_options.h"
#include "faults/stamped_run.h"
#include "support/built_driver.h"

namespace plc::faults {
namespace {

class StampedPlant : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(StampedPlant, AllThatTheHostTellsWasSo)
{
    StampedRun run(test::builtDriver(), GetParam());
    run.run();
    EXPECT_GT(run.judgedValues(), 0u);
    if (HasFailure()) {
        GTEST_FAIL() << "Repeat it with: " << runOptions().program << " --seed " << GetParam()
                     << " --gtest_filter='*StampedPlant*'\nWhat went wrong:\n"
                     << run.history().toStdString();
    }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(StampedPlant);
INSTANTIATE_TEST_SUITE_P(Seed, StampedPlant, ::testing::ValuesIn(seedsOfRuns()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace plc::faults
