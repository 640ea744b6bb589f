#include "base/wrapped_int.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace plc {
namespace {

TEST(ToInt32, KeepsWhatFits)
{
    EXPECT_EQ(toInt32(0), 0);
    EXPECT_EQ(toInt32(-1), -1);
    EXPECT_EQ(toInt32(INT_MAX), INT_MAX);
    EXPECT_EQ(toInt32(INT_MIN), INT_MIN);
}

TEST(ToInt32, KeepsTheLowThirtyTwoBitsOfTheRest)
{
    EXPECT_EQ(toInt32(qint64(INT_MAX) + 1), INT_MIN);
    EXPECT_EQ(toInt32(qint64(INT_MIN) - 1), INT_MAX);
    EXPECT_EQ(toInt32(qint64(0x1234567890ABCDEF)), -1867788817); // 0x90ABCDEF
    EXPECT_EQ(toInt32(std::numeric_limits<qint64>::max()), -1);
    EXPECT_EQ(toInt32(std::numeric_limits<qint64>::min()), 0);
}

TEST(Advanced, GoesOnAtZeroBehindTheLastAddress)
{
    EXPECT_EQ(advanced(0x20, 4), 0x24);
    EXPECT_EQ(advanced(-1, 1), 0);
    EXPECT_EQ(advanced(-2, 5), 3);
    EXPECT_EQ(advanced(INT_MAX, 1), INT_MIN);
    EXPECT_EQ(advanced(0x20, qint64(1) << 32), 0x20);
    EXPECT_EQ(advanced(0x20, -0x21), -1);
    EXPECT_EQ(advanced(0xFFFFFFFFu, 1), 0u);
    EXPECT_EQ(advanced(0u, -1), 0xFFFFFFFFu);
}

} // namespace
} // namespace plc
