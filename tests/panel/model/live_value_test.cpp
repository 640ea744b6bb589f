#include "panel/model/live_value.h"

#include <gtest/gtest.h>

namespace plc::panel {
namespace {

TEST(LiveValue, IsStaleAndUnreadUntilThePlcHasGivenIt)
{
    const LiveValue value;
    EXPECT_FALSE(value.wasRead());
    EXPECT_EQ(Quality::Stale, value.quality);
    EXPECT_TRUE(value.bytes.isEmpty());
}

TEST(LiveValue, WasReadAtTheMomentOfItsRequest)
{
    LiveValue value;
    value.time = 1764000000123;
    value.steady = 4500;
    EXPECT_TRUE(value.wasRead());
    EXPECT_EQ(1764000000123, value.moment().time);
    EXPECT_EQ(4500, value.moment().steady);
}

TEST(Quality, IsToldInTheWordsOfTheInterface)
{
    EXPECT_STREQ("good", qualityWord(Quality::Good));
    EXPECT_STREQ("stale", qualityWord(Quality::Stale));
    EXPECT_STREQ("bad", qualityWord(Quality::Bad));
}

} // namespace
} // namespace plc::panel
