// Seeded runs of a host and a simulated PLC with a faulty wire between them.

#include <gtest/gtest.h>

#include "faults/fault_run.h"
#include "faults/run_options.h"
#include "support/built_driver.h"

namespace plc::faults {
namespace {

class FaultyWire : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(FaultyWire, HostComesBackAndNoWriteIsMisreported)
{
    constexpr int kMostRuns = 3;
    bool isLate = true;
    for (int i = 1; isLate && !HasFailure() && i <= kMostRuns; ++i) {
        FaultRun run(test::builtDriver(), GetParam());
        run.run();
        isLate = !run.delay().empty();
        if (i == kMostRuns) {
            EXPECT_EQ("", run.delay()) << "in each of " << kMostRuns << " runs";
        }
        if (HasFailure()) {
            GTEST_FAIL() << "Repeat it with: " << runOptions().program << " --seed " << GetParam()
                         << "\nWhat went wrong on the wire:\n"
                         << run.history().toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, FaultyWire, ::testing::ValuesIn(seedsOfRuns()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace plc::faults
