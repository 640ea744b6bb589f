#include "panel/plants/live_table.h"

#include <gtest/gtest.h>

#include "values/iec_types.h"

namespace plc::panel {
namespace {

constexpr int kStaleAfter = 3000; // ms
/// What the clock of the wall shows when that of the table shows 0.
constexpr qint64 kWall = 1000000;
constexpr qint64 kSteady = 5000000;

/// Two values of 16 bits, at the addresses 0 and 2, in the slots 3 and 1.
class LiveTableTest : public testing::Test {
protected:
    static host::DataPoint point(int address)
    {
        host::DataPoint result;
        result.type = values::findIecType(QStringLiteral("INT"));
        result.area = 1;
        result.address = address;
        return result;
    }
    void read(int address, char value, qint64 sentAt)
    {
        host::FrameEntry entry;
        entry.area = 1;
        entry.address = quint32(address);
        entry.length = 2;
        table.replyAccepted({entry}, {QByteArray(1, '\0') + QByteArray(1, value)}, sentAt,
                            sentAt + 20);
    }
    QVector<int> sample(qint64 now)
    {
        return live.sample(table, {3, 1}, now, {kWall + now, kSteady + now});
    }

    qint64 confirmedTime() const { return live.confirmed().value_or(Moment()).time; }

    host::ValueTable table{{point(0), point(2)}, kStaleAfter, 998, 0};
    LiveTable live;
};

TEST_F(LiveTableTest, NothingIsKnownAtFirst)
{
    EXPECT_TRUE(sample(100).isEmpty());
    EXPECT_FALSE(live.value(3).wasRead());
    EXPECT_EQ(Quality::Stale, live.value(3).quality);
    EXPECT_FALSE(live.confirmed());
}

TEST_F(LiveTableTest, ValueHasTheTimeOfItsRequest)
{
    read(0, 5, 200);
    EXPECT_EQ(QVector<int>{3}, sample(250));
    EXPECT_EQ(kWall + 200, live.value(3).time);
    EXPECT_EQ(kSteady + 200, live.value(3).steady);
    EXPECT_EQ(Quality::Good, live.value(3).quality);
    EXPECT_EQ(kWall + 200, confirmedTime());
}

TEST_F(LiveTableTest, UnchangedValueIsYoungerButNotChanged)
{
    read(0, 5, 200);
    sample(250);
    read(0, 5, 1200);
    EXPECT_TRUE(sample(1250).isEmpty());
    EXPECT_EQ(kWall + 1200, live.value(3).time);
    EXPECT_EQ(kWall + 1200, confirmedTime());
}

TEST_F(LiveTableTest, ConfirmedIsTheOldestGoodValue)
{
    read(0, 5, 200);
    read(2, 6, 900);
    EXPECT_EQ((QVector<int>{3, 1}), sample(950));
    EXPECT_EQ(kWall + 200, confirmedTime());
    read(0, 5, 1000);
    sample(1050);
    EXPECT_EQ(kWall + 900, confirmedTime());
    EXPECT_EQ(kSteady + 900, live.confirmed()->steady);
}

TEST_F(LiveTableTest, StaleValueKeepsBytesAndTime)
{
    read(0, 5, 200);
    sample(250);
    EXPECT_TRUE(sample(3200).isEmpty());
    EXPECT_EQ(QVector<int>{3}, sample(3201));
    EXPECT_EQ(Quality::Stale, live.value(3).quality);
    EXPECT_EQ(kWall + 200, live.value(3).time);
    EXPECT_EQ(2, live.value(3).bytes.size());
    EXPECT_FALSE(live.confirmed()) << "what is stale is not confirmed";
}

TEST_F(LiveTableTest, RefusedValueIsBad)
{
    read(0, 5, 200);
    sample(250);
    table.refused(0, 5);
    EXPECT_EQ(QVector<int>{3}, sample(300));
    EXPECT_EQ(Quality::Bad, live.value(3).quality);
}

TEST_F(LiveTableTest, ForgottenSlotBeginsAnew)
{
    read(0, 5, 200);
    sample(250);
    live.forget(3);
    EXPECT_FALSE(live.value(3).wasRead());
    EXPECT_EQ(QVector<int>{3}, sample(260));
}

} // namespace
} // namespace plc::panel
