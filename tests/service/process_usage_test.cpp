#include "service/process_usage.h"

#include <gtest/gtest.h>

namespace plc::service {
namespace {

TEST(ProcessUsage, OfAProgramThatRunsIsTimeAndMemory)
{
    const ProcessUsage usage = processUsage();
    EXPECT_GT(usage.processorTime, 0);
    EXPECT_GT(usage.residentBytes, 1000000);
}

} // namespace
} // namespace plc::service
