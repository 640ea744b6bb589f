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
    // A host that does not come back in time does not do so in any of these; a machine on which a
    // reply takes longer than it may has more time in the next one.
    constexpr int kMostSlowness = 16;
    bool isLate = true;
    for (int slowness = 1; isLate && slowness <= kMostSlowness; slowness *= 4) {
        FaultRun run(test::builtDriver(), GetParam(), slowness);
        run.run();
        isLate = !run.delay().empty();
        if (slowness == kMostSlowness) {
            EXPECT_EQ("", run.delay());
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
