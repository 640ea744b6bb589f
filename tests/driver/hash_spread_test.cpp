#include "driver/hash_spread.h"

#include <gtest/gtest.h>

namespace plc {
namespace {

TEST(HashSpread, MultipliesByTheGoldenRatioAndDropsWhatDoesNotFit)
{
    EXPECT_EQ(Q_UINT64_C(0), spread(0));
    EXPECT_EQ(Q_UINT64_C(0x9E3779B97F4A7C15), spread(1));
    // 2 * 0x9E3779B97F4A7C15 = 0x1'3C6EF372FE94F82A
    EXPECT_EQ(Q_UINT64_C(0x3C6EF372FE94F82A), spread(2));
}

} // namespace
} // namespace plc
