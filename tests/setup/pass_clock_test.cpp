#include "setup/pass_clock.h"

#include <gtest/gtest.h>

namespace plc::setup {
namespace {

TEST(PassClock, TellsTheTimeFromTheEndOfAPassToThatOfTheNext)
{
    PassClock clock;
    EXPECT_FALSE(clock.hasEnded(0, 10));
    EXPECT_TRUE(clock.hasEnded(1, 100));
    EXPECT_EQ(0, clock.duration()) << "when the first one began is not known";
    EXPECT_FALSE(clock.hasEnded(1, 150));
    EXPECT_TRUE(clock.hasEnded(2, 175));
    EXPECT_EQ(75, clock.duration());
}

TEST(PassClock, KnowsNothingOfALinkFromTheOneBefore)
{
    PassClock clock;
    EXPECT_TRUE(clock.hasEnded(1, 100));
    EXPECT_TRUE(clock.hasEnded(2, 175));
    clock.restart(2);
    EXPECT_EQ(0, clock.duration());
    EXPECT_FALSE(clock.hasEnded(2, 5000));
    EXPECT_TRUE(clock.hasEnded(3, 9000));
    EXPECT_EQ(0, clock.duration()) << "the pause was no pass";
    EXPECT_TRUE(clock.hasEnded(4, 9050));
    EXPECT_EQ(50, clock.duration());
}

} // namespace
} // namespace plc::setup
