#include "host/points/checked_points.h"

#include "tests/host/host_fixture.h"

namespace plc::host::test {
namespace {

class CheckedPointsTest : public HostTest {
protected:
    bool isGood(const DataPoint& target) { return bool(checked.check(runtime->points(), target)); }

    CheckedPoints checked;
};

TEST_F(CheckedPointsTest, WhatWasGoodIsGoodAgainAndRememberedOnce)
{
    EXPECT_TRUE(isGood(point("Main.speed")));
    EXPECT_TRUE(isGood(point("Main.speed")));
    EXPECT_EQ(1, checked.size());
}

TEST_F(CheckedPointsTest, PointOfAGoodLabelWithAnotherPlaceIsRefused)
{
    ASSERT_TRUE(isGood(point("Main.speed")));
    DataPoint moved = point("Main.speed");
    moved.address += 2;
    EXPECT_FALSE(isGood(moved));
    DataPoint longer = point("Main.speed");
    longer.elements = 2;
    EXPECT_FALSE(isGood(longer));
    DataPoint elsewhere = point("Main.speed");
    elsewhere.station = 3;
    EXPECT_FALSE(isGood(elsewhere));
    EXPECT_TRUE(isGood(point("Main.speed")));
}

TEST_F(CheckedPointsTest, WhatWasRefusedIsNotRemembered)
{
    DataPoint none = point("Main.speed");
    none.label = "Main.sped";
    EXPECT_FALSE(isGood(none));
    EXPECT_FALSE(isGood(none));
    EXPECT_EQ(0, checked.size());
}

TEST_F(CheckedPointsTest, PartsOfAnArrayFromOneElementOnAreToldApart)
{
    EXPECT_TRUE(isGood(point("Main.table[1,2]*7")));
    EXPECT_TRUE(isGood(point("Main.table[1,2]*3")));
    EXPECT_TRUE(isGood(point("Main.table[1,2]*7")));
    EXPECT_FALSE(bool(runtime->points().find("Main.table[3,4]*3")));
    DataPoint tooLong = point("Main.table[3,4]*2");
    tooLong.elements = 3;
    EXPECT_FALSE(isGood(tooLong));
}

} // namespace
} // namespace plc::host::test
