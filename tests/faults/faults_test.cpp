// Seeded runs of a host and a simulated PLC with a faulty wire between them.

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "faults/fault_run.h"
#include "faults/run_options.h"

namespace plc {
namespace faults {
namespace {

/// Loaded once: the driver of a host stays for as long as the host runs.
const DriverFunctions& driver()
{
    static const DriverFunctions functions = [] {
        QString error;
        const std::optional<DriverFunctions> loaded =
            loadDriver(QStringLiteral(PLC_LIBRARY), &error);
        if (!loaded)
            ADD_FAILURE() << error.toStdString();
        return loaded.value_or(DriverFunctions());
    }();
    return functions;
}

std::vector<std::uint32_t> seeds()
{
    std::vector<std::uint32_t> list(runOptions().runs);
    std::iota(list.begin(), list.end(), runOptions().firstSeed);
    return list;
}

class FaultyWire : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(FaultyWire, HostComesBackAndNoWriteIsMisreported)
{
    FaultRun run(driver(), GetParam());
    run.run();
    if (HasFailure()) {
        GTEST_FAIL() << "Repeat it with: " << runOptions().program << " --seed " << GetParam()
                     << "\nWhat went wrong on the wire:\n"
                     << run.history().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, FaultyWire, ::testing::ValuesIn(seeds()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace faults
} // namespace plc
