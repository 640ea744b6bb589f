#include "gateway/service/broker_choice.h"

#include <gtest/gtest.h>

namespace plc::gateway {
namespace {

TEST(BrokerChoice, NextBrokerIsTriedNearlyAtOnce)
{
    BrokerChoice choice(3, 1);
    EXPECT_EQ(0, choice.current());
    EXPECT_EQ(100, choice.failed());
    EXPECT_EQ(1, choice.current());
    EXPECT_EQ(100, choice.failed());
    EXPECT_EQ(2, choice.current());
}

TEST(BrokerChoice, PauseDoublesFromRoundToRoundUpToHalfAMinute)
{
    BrokerChoice choice(2, 1);
    for (int wanted : {1000, 2000, 4000, 8000, 16000, 30000, 30000}) {
        EXPECT_EQ(100, choice.failed());
        const int pause = choice.failed();
        EXPECT_LE(pause, wanted);
        EXPECT_GE(pause, wanted * 3 / 4);
        EXPECT_EQ(0, choice.current());
    }
}

TEST(BrokerChoice, SingleBrokerIsTriedAgainAfterAPause)
{
    BrokerChoice choice(1, 1);
    EXPECT_GE(choice.failed(), 750);
    EXPECT_EQ(0, choice.current());
}

TEST(BrokerChoice, SuccessBeginsTheRoundsAnew)
{
    BrokerChoice choice(2, 1);
    for (int i = 0; i < 7; ++i)
        choice.failed();
    EXPECT_EQ(1, choice.current());
    choice.succeeded();
    EXPECT_EQ(100, choice.failed());
    EXPECT_EQ(0, choice.current());
    EXPECT_LE(choice.failed(), 1000);
}

TEST(BrokerChoice, PausesOfTwoGatewaysDiffer)
{
    BrokerChoice one(1, 1);
    BrokerChoice other(1, 2);
    EXPECT_NE(one.failed(), other.failed());
}

} // namespace
} // namespace plc::gateway
