#include "values/value_range.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace plc::values {
namespace {

TEST(ValueRange, HasBothItsEnds)
{
    const ValueRange range{-5, 50};
    EXPECT_TRUE(range.contains(qint64(-5)));
    EXPECT_TRUE(range.contains(quint64(50)));
    EXPECT_FALSE(range.contains(qint64(-6)));
    EXPECT_FALSE(range.contains(quint64(51)));
    EXPECT_TRUE(range.contains(50.0));
    EXPECT_FALSE(range.contains(std::nextafter(50.0, 51.0)));
    EXPECT_TRUE(range.contains(-5.0f));
}

TEST(ValueRange, HasItsEndsAlsoInThirtyTwoBits)
{
    // The nearest floats: 0.1 is 13421773 * 2^-27, above it; 0.7 is 11744051 * 2^-24, below it;
    // 99.9 is 13094093 * 2^-17, above it.
    EXPECT_TRUE((ValueRange{{}, 0.1}).contains(0.1f));
    EXPECT_FALSE((ValueRange{{}, 0.1}).contains(13421774.0f / 134217728.0f));
    EXPECT_TRUE((ValueRange{0.1, {}}).contains(13421773.0f / 134217728.0f));
    EXPECT_FALSE((ValueRange{0.1, {}}).contains(13421772.0f / 134217728.0f));
    EXPECT_TRUE((ValueRange{0.7, {}}).contains(0.7f));
    EXPECT_FALSE((ValueRange{0.7, {}}).contains(11744050.0f / 16777216.0f));
    EXPECT_TRUE((ValueRange{99.9, 99.9}).contains(99.9f));
    EXPECT_FALSE((ValueRange{99.9, 99.9}).contains(13094094.0f / 131072.0f));
    EXPECT_FALSE((ValueRange{{}, 0.1}).contains(double(0.1f))) << "64 bits have the bound itself";
}

TEST(ValueRange, BoundsThatThirtyTwoBitsCannotExpressStayAsTheyAre)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    EXPECT_FALSE((ValueRange{{}, 1e300}).contains(kInfinity));
    EXPECT_FALSE((ValueRange{-1e300, {}}).contains(-kInfinity));
    EXPECT_TRUE((ValueRange{-1e300, 1e300}).contains(std::numeric_limits<float>::max()));
    EXPECT_FALSE((ValueRange{1e-50, {}}).contains(0.0f));
    EXPECT_TRUE((ValueRange{{}, 1e-50}).contains(0.0f));
}

TEST(ValueRange, FractionOfABoundCountsForIntegers)
{
    const ValueRange range{-1.5, 2.5};
    EXPECT_FALSE(range.contains(qint64(-2)));
    EXPECT_TRUE(range.contains(qint64(-1)));
    EXPECT_TRUE(range.contains(qint64(2)));
    EXPECT_FALSE(range.contains(qint64(3)));
}

TEST(ValueRange, LargeIntegersAreNotRounded)
{
    const ValueRange range{-9007199254740992.0, 9007199254740992.0};
    EXPECT_TRUE(range.contains(qint64(9007199254740992)));
    EXPECT_FALSE(range.contains(qint64(9007199254740993))) << "as a double it is the bound";
    EXPECT_FALSE(range.contains(quint64(9007199254740993)));
    EXPECT_TRUE(range.contains(qint64(-9007199254740992)));
    EXPECT_FALSE(range.contains(qint64(-9007199254740993)));
}

TEST(ValueRange, BoundsBeyondTheIntegersAreNoObstacle)
{
    const ValueRange range{-1e30, 1e30};
    EXPECT_TRUE(range.contains(std::numeric_limits<qint64>::min()));
    EXPECT_TRUE(range.contains(std::numeric_limits<quint64>::max()));
    EXPECT_FALSE((ValueRange{1e30, {}}).contains(std::numeric_limits<quint64>::max()));
    EXPECT_FALSE((ValueRange{{}, -1.0}).contains(quint64(0)));
}

TEST(ValueRange, OnlyNumbersAreInsideWhereThereIsABound)
{
    EXPECT_FALSE((ValueRange{0, {}}).contains(QStringLiteral("1")));
    EXPECT_FALSE((ValueRange{0, {}}).contains(std::nan("")));
    EXPECT_TRUE(ValueRange().contains(QStringLiteral("1")));
    EXPECT_TRUE(ValueRange().contains(std::nan("")));
}

TEST(ValueRange, IsToldWithAllDigits)
{
    EXPECT_EQ("-5..3000000", (ValueRange{-5, 3000000}).text().toStdString());
    EXPECT_EQ("..0.1", (ValueRange{{}, 0.1}).text().toStdString());
    EXPECT_EQ("1..", (ValueRange{1, {}}).text().toStdString());
}

} // namespace
} // namespace plc::values
