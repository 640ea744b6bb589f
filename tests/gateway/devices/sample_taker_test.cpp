#include "gateway/devices/sample_taker.h"

#include <gtest/gtest.h>

#include "host/wire/frame_entries.h"
#include "values/iec_types.h"

namespace plc::gateway {
namespace {

constexpr int kStaleAfter = 3000; // ms
/// What the clock of the wall shows when that of the table shows 0.
constexpr qint64 kWall = 1000000;

/// Two values of 16 bits: a number at address 0, and another one at address 2.
class SampleTakerTest : public testing::Test {
protected:
    static Metric metric(int address, double deadband)
    {
        Metric result;
        result.point.type = values::findIecType(QStringLiteral("INT"));
        result.point.area = 1;
        result.point.address = address;
        result.deadband = deadband;
        return result;
    }
    /// The PLC gives a value to a request that was sent at `sentAt`.
    void read(int address, qint16 value, qint64 sentAt)
    {
        host::FrameEntry entry;
        entry.area = 1;
        entry.address = quint32(address);
        entry.length = 2;
        // The most significant byte comes first.
        const QByteArray block = QByteArray(1, char(value >> 8)) + QByteArray(1, char(value));
        values.replyAccepted({entry}, {block}, sentAt, sentAt + 20);
    }
    QVector<Sample> take(qint64 now) { return taker.take(values, now, kWall + now); }

    const QVector<Metric> metrics{metric(0, 0.0), metric(2, 10.0)};
    host::ValueTable values{{metrics[0].point, metrics[1].point}, kStaleAfter, 998, 0};
    SampleTaker taker{metrics, kWall};
};

TEST_F(SampleTakerTest, NothingIsToldBeforeAValueCame)
{
    EXPECT_TRUE(take(100).isEmpty());
    EXPECT_EQ(Quality::Stale, taker.told()[0].quality);
    EXPECT_TRUE(taker.told()[0].bytes.isEmpty());
    EXPECT_EQ(kWall, taker.told()[0].time);
}

TEST_F(SampleTakerTest, ValueHasTheTimeOfItsRequest)
{
    read(0, 5, 200);
    const QVector<Sample> samples = take(250);
    ASSERT_EQ(1, samples.size());
    EXPECT_EQ(0, samples[0].metric);
    EXPECT_EQ(kWall + 200, samples[0].time);
    EXPECT_EQ(Quality::Good, samples[0].quality);
    EXPECT_TRUE(samples[0].isQualityNew);
    EXPECT_EQ(2, samples[0].bytes.size());
}

TEST_F(SampleTakerTest, ValueThatIsReadAgainUnchangedIsNotTold)
{
    read(0, 5, 200);
    take(250);
    read(0, 5, 1200);
    EXPECT_TRUE(take(1250).isEmpty());
}

TEST_F(SampleTakerTest, ChangeIsToldOnceWithoutQuality)
{
    read(0, 5, 200);
    take(250);
    read(0, 6, 1200);
    const QVector<Sample> samples = take(1250);
    ASSERT_EQ(1, samples.size());
    EXPECT_FALSE(samples[0].isQualityNew);
    EXPECT_EQ(kWall + 1200, samples[0].time);
    EXPECT_TRUE(take(1260).isEmpty());
}

TEST_F(SampleTakerTest, ValueBecomesStaleOnceAndGoodAgain)
{
    read(0, 5, 200);
    take(250);
    EXPECT_TRUE(take(200 + kStaleAfter).isEmpty());
    QVector<Sample> samples = take(201 + kStaleAfter);
    // Of the other one, which was never read, nothing changes.
    ASSERT_EQ(1, samples.size());
    EXPECT_EQ(Quality::Stale, samples[0].quality);
    EXPECT_TRUE(samples[0].isQualityNew);
    EXPECT_EQ(kWall + 201 + kStaleAfter, samples[0].time);
    EXPECT_EQ(2, samples[0].bytes.size());
    EXPECT_TRUE(take(9000).isEmpty());
    read(0, 5, 9100);
    samples = take(9150);
    ASSERT_EQ(1, samples.size());
    EXPECT_EQ(Quality::Good, samples[0].quality);
    EXPECT_TRUE(samples[0].isQualityNew);
}

TEST_F(SampleTakerTest, RefusedValueIsBad)
{
    read(0, 5, 200);
    take(250);
    values.refused(0, 0x31);
    const QVector<Sample> samples = take(400);
    ASSERT_EQ(1, samples.size());
    EXPECT_EQ(Quality::Bad, samples[0].quality);
    EXPECT_EQ(kWall + 400, samples[0].time);
}

TEST_F(SampleTakerTest, DeadbandCountsFromWhatWasToldLast)
{
    read(2, 100, 100);
    EXPECT_EQ(1, take(150).size());
    read(2, 109, 200);
    EXPECT_TRUE(take(250).isEmpty());
    read(2, 91, 300);
    EXPECT_TRUE(take(350).isEmpty());
    read(2, 110, 400);
    EXPECT_EQ(1, take(450).size());
    read(2, 101, 500);
    EXPECT_TRUE(take(550).isEmpty());
    EXPECT_EQ(kWall + 400, taker.told()[1].time);
}

} // namespace
} // namespace plc::gateway
