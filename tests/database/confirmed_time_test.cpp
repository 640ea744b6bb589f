#include "database/confirmed_time.h"

#include <gtest/gtest.h>

namespace plc::database {
namespace test {
namespace {

constexpr qint64 kSecond = 1000;
constexpr qint64 kHour = 3600 * kSecond;
constexpr qint64 kYear = 365 * 24 * kHour;
constexpr qint64 kStart = 1800000000000;

TEST(ConfirmedTime, IsKnownOnceTheClocksWentAlongForAnHour)
{
    ConfirmedTime time;
    EXPECT_EQ(std::nullopt, time.update(kStart, 5));
    EXPECT_EQ(std::nullopt, time.update(kStart + kHour - 1, 5 + kHour - 1));
    EXPECT_EQ(kStart + kHour, time.update(kStart + kHour, 5 + kHour));
}

TEST(ConfirmedTime, PassesAsBeforeWhileTheClockIsWrong)
{
    ConfirmedTime time;
    time.update(kStart, 0);
    time.update(kStart + kHour, kHour);
    EXPECT_EQ(kStart + kHour + 1000, time.update(kStart + kYear, kHour + 1000));
    EXPECT_EQ(kStart + kHour + 2000, time.update(kStart + kHour + 2000, kHour + 2000));
    // And as the clock, when it was not set for an hour.
    time.update(kStart + kYear, kHour + 3000);
    EXPECT_EQ(kStart + 2 * kHour + 2999, time.update(kStart + kYear + kHour - 1, 2 * kHour + 2999));
    EXPECT_EQ(kStart + kYear + kHour, time.update(kStart + kYear + kHour, 2 * kHour + 3000));
}

TEST(ConfirmedTime, IsNeverBehindTheClock)
{
    ConfirmedTime time;
    time.update(kStart, 0);
    time.update(kStart + kHour, kHour);
    EXPECT_EQ(kStart - kYear, time.update(kStart - kYear, kHour + 1000));
}

TEST(ConfirmedTime, BearsAClockThatIsSlewed)
{
    ConfirmedTime time;
    time.update(kStart, 0);
    EXPECT_EQ(std::nullopt, time.update(kStart + kHour / 2 + 10000, kHour / 2));
    EXPECT_EQ(kStart + kHour - 10000, time.update(kStart + kHour - 10000, kHour));
    ConfirmedTime other;
    other.update(kStart, 0);
    EXPECT_EQ(std::nullopt, other.update(kStart + kHour / 2 + 10001, kHour / 2));
    EXPECT_EQ(std::nullopt, other.update(kStart + kHour + 10001, kHour));
}

} // namespace
} // namespace test
} // namespace plc::database
