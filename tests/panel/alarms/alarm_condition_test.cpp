#include "panel/alarms/alarm_condition.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/panel/alarms/alarm_examples.h"

namespace plc::panel {
namespace {

using test::above;
using test::below;
using test::is;
using values::Value;

TEST(AlarmCondition, ALimitItselfIsNotBeyondIt)
{
    EXPECT_EQ(Verdict::Clear, judge(above(80), 80.0));
    EXPECT_EQ(Verdict::Holds, judge(above(80), std::nextafter(80.0, 81.0)));
    EXPECT_EQ(Verdict::Clear, judge(below(80), 80.0));
    EXPECT_EQ(Verdict::Holds, judge(below(80), std::nextafter(80.0, 79.0)));
}

TEST(AlarmCondition, ADeadbandReachesUpToAndWithoutItsEnd)
{
    EXPECT_EQ(Verdict::InDeadband, judge(above(80, 5), 80.0));
    EXPECT_EQ(Verdict::InDeadband, judge(above(80, 5), 75.1));
    EXPECT_EQ(Verdict::Clear, judge(above(80, 5), 75.0));
    EXPECT_EQ(Verdict::InDeadband, judge(below(10, 2), 11.9));
    EXPECT_EQ(Verdict::Clear, judge(below(10, 2), 12.0));
}

TEST(AlarmCondition, RealsAreComparedWithTheLimitThatAPlcHolds)
{
    // The float of 80.1 is 80.09999847…, which is less than the double 80.1.
    EXPECT_EQ(Verdict::Clear, judge(below(80.1), 80.1F));
    EXPECT_EQ(Verdict::Holds, judge(below(80.1), std::nextafter(80.1F, 0.0F)));
    EXPECT_EQ(Verdict::Holds, judge(is(80.1), 80.1F));
}

TEST(AlarmCondition, IntegersOf64BitsAreComparedExactly)
{
    // 2^53 is where doubles begin to leave integers out.
    const qint64 large = (qint64(1) << 53);
    EXPECT_EQ(Verdict::Clear, judge(above(double(large)), large));
    EXPECT_EQ(Verdict::Holds, judge(above(double(large)), large + 1));
    EXPECT_EQ(Verdict::Holds, judge(below(double(large)), large - 1));
    const qint64 highest = std::numeric_limits<qint64>::max();
    const quint64 highestUnsigned = std::numeric_limits<quint64>::max();
    // As doubles both limits are the next power of two.
    EXPECT_EQ(Verdict::Holds, judge(below(double(highest)), highest));
    EXPECT_EQ(Verdict::Holds, judge(below(double(highestUnsigned)), highestUnsigned));
    EXPECT_EQ(Verdict::Holds, judge(above(-1), quint64(0)));
    EXPECT_EQ(Verdict::Clear, judge(below(-9.3e18), std::numeric_limits<qint64>::min()));
    EXPECT_EQ(Verdict::Clear, judge(below(double(std::numeric_limits<qint64>::min())),
                                    std::numeric_limits<qint64>::min()));
}

TEST(AlarmCondition, AFractionLiesBetweenIntegers)
{
    EXPECT_EQ(Verdict::Clear, judge(above(2.5), qint64(2)));
    EXPECT_EQ(Verdict::Holds, judge(above(2.5), qint64(3)));
    EXPECT_EQ(Verdict::Holds, judge(above(-2.5), qint64(-2)));
    EXPECT_EQ(Verdict::Holds, judge(below(-2.5), qint64(-3)));
    EXPECT_EQ(Verdict::Clear, judge(below(0.5), quint64(1)));
}

TEST(AlarmCondition, AStateIsComparedWithItsOwnKind)
{
    EXPECT_EQ(Verdict::Holds, judge(is(true), true));
    EXPECT_EQ(Verdict::Clear, judge(is(true), false));
    EXPECT_EQ(Verdict::Holds, judge(is(false), false));
    EXPECT_EQ(Verdict::Holds, judge(is(QStringLiteral("stop")), QStringLiteral("stop")));
    EXPECT_EQ(Verdict::Clear, judge(is(QStringLiteral("stop")), QStringLiteral("Stop")));
    EXPECT_EQ(Verdict::Holds, judge(is(qint64(3)), quint64(3)));
    EXPECT_EQ(Verdict::Clear, judge(is(qint64(-1)), std::numeric_limits<quint64>::max()));
    EXPECT_EQ(Verdict::Holds, judge(is(qint64(3)), 3.0F));
    EXPECT_EQ(Verdict::Holds, judge(is(0.0), -0.0));
    const qint64 large = (qint64(1) << 53) + 1;
    EXPECT_EQ(Verdict::Clear, judge(is(large), large - 1));
    EXPECT_EQ(Verdict::Holds, judge(is(large), large));
}

TEST(AlarmCondition, WhatCannotBeComparedIsSaid)
{
    EXPECT_EQ(Verdict::NotComparable, judge(above(1), std::nan("")));
    EXPECT_EQ(Verdict::NotComparable, judge(below(1), float(std::nan(""))));
    EXPECT_EQ(Verdict::NotComparable, judge(is(1.0), std::nan("")));
    EXPECT_EQ(Verdict::NotComparable, judge(above(1), true));
    EXPECT_EQ(Verdict::NotComparable, judge(above(1), QStringLiteral("2")));
    EXPECT_EQ(Verdict::NotComparable, judge(is(true), qint64(1)));
    EXPECT_EQ(Verdict::NotComparable, judge(is(QStringLiteral("1")), qint64(1)));
    EXPECT_EQ(Verdict::Holds, judge(above(1), std::numeric_limits<double>::infinity()));
}

} // namespace
} // namespace plc::panel
