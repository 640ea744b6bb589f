#include "base/wrapped_int.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace plc {
namespace {

TEST(ToInt32, KeepsWhatFits)
{
    EXPECT_EQ(0, toInt32(0));
    EXPECT_EQ(-1, toInt32(-1));
    EXPECT_EQ(INT_MAX, toInt32(INT_MAX));
    EXPECT_EQ(INT_MIN, toInt32(INT_MIN));
}

TEST(ToInt32, KeepsTheLowThirtyTwoBitsOfTheRest)
{
    EXPECT_EQ(INT_MIN, toInt32(qint64(INT_MAX) + 1));
    EXPECT_EQ(INT_MAX, toInt32(qint64(INT_MIN) - 1));
    EXPECT_EQ(-1867788817, toInt32(qint64(0x1234567890ABCDEF))); // 0x90ABCDEF
    EXPECT_EQ(-1, toInt32(std::numeric_limits<qint64>::max()));
    EXPECT_EQ(0, toInt32(std::numeric_limits<qint64>::min()));
}

TEST(Advanced, GoesOnAtZeroBehindTheLastAddress)
{
    EXPECT_EQ(0x24, advanced(0x20, 4));
    EXPECT_EQ(0, advanced(-1, 1));
    EXPECT_EQ(3, advanced(-2, 5));
    EXPECT_EQ(INT_MIN, advanced(INT_MAX, 1));
    EXPECT_EQ(0x20, advanced(0x20, qint64(1) << 32));
    EXPECT_EQ(-1, advanced(0x20, -0x21));
    EXPECT_EQ(0u, advanced(0xFFFFFFFFu, 1));
    EXPECT_EQ(0xFFFFFFFFu, advanced(0u, -1));
}

} // namespace
} // namespace plc
