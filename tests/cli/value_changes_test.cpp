#include "cli/value_changes.h"

#include "tests/host/host_fixture.h"

namespace plc::cli {
namespace test {

using host::test::hex;
using host::test::HostTest;
namespace {

constexpr int kStaleAfter = 3000;

/// A table of two numbers, whose bytes the test sets.
class ValueChangesTest : public HostTest {
protected:
    ValueChangesTest() : values({point("Main.speed"), point("Main.count")}, kStaleAfter, 998, 0) {}

    void readBoth(qint64 time)
    {
        // Main.speed and Main.count lie at bytes 4 to 7 of area 1.
        host::FrameEntry entry;
        entry.area = 1;
        entry.address = 4;
        entry.length = 4;
        values.replyAccepted({entry}, {speed + count}, time, time);
    }
    QVector<int> take(qint64 time) { return changes.take(values, time); }

    QByteArray speed = hex("00 01");
    QByteArray count = hex("00 02");
    host::ValueTable values;
    ValueChanges changes;
};

TEST_F(ValueChangesTest, ThereIsNothingBeforeTheFirstRead)
{
    EXPECT_EQ(QVector<int>(), take(0));
}

TEST_F(ValueChangesTest, TheFirstReadIsNewAndTheSameAgainIsNot)
{
    readBoth(10);
    EXPECT_EQ((QVector<int>{0, 1}), take(10));
    readBoth(20);
    EXPECT_EQ(QVector<int>(), take(20));
}

TEST_F(ValueChangesTest, ARefusedValueIsNewAlsoWhereItWasStale)
{
    readBoth(10);
    take(10);
    EXPECT_EQ((QVector<int>{0, 1}), take(10 + kStaleAfter + 1));
    values.refused(1, 0x31);
    EXPECT_EQ(QVector<int>{1}, take(10 + kStaleAfter + 2));
    EXPECT_EQ(QVector<int>(), take(10 + kStaleAfter + 3));
}

TEST_F(ValueChangesTest, AChangedValueIsNew)
{
    readBoth(10);
    take(10);
    count = hex("00 03");
    readBoth(20);
    EXPECT_EQ(QVector<int>{1}, take(20));
}

TEST_F(ValueChangesTest, StaleAndFreshAgainAreNewOnceEach)
{
    readBoth(10);
    take(10);
    EXPECT_EQ(QVector<int>(), take(10 + kStaleAfter));
    EXPECT_EQ((QVector<int>{0, 1}), take(11 + kStaleAfter));
    EXPECT_EQ(QVector<int>(), take(12 + kStaleAfter));
    readBoth(4000);
    EXPECT_EQ((QVector<int>{0, 1}), take(4000));
}

TEST_F(ValueChangesTest, AValueNeverReadIsToldWhenItIsWaitedForTooLong)
{
    EXPECT_EQ((QVector<int>{0, 1}), take(kStaleAfter + 1));
}

} // namespace
} // namespace test
} // namespace plc::cli
