#include "host/runtime/value_table.h"

#include "host/link/backoff.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

TEST(Freshness, IsTheTimeOfTheByteReadLongestAgo)
{
    Freshness freshness(10);
    EXPECT_EQ(Freshness::kNever, freshness.oldest());
    EXPECT_TRUE(freshness.cover(0, 4, 100));
    EXPECT_EQ(Freshness::kNever, freshness.oldest());
    EXPECT_TRUE(freshness.cover(4, 10, 110));
    EXPECT_EQ(100, freshness.oldest());
    EXPECT_TRUE(freshness.cover(0, 4, 120));
    EXPECT_EQ(110, freshness.oldest());
    EXPECT_TRUE(freshness.cover(3, 5, 130));
    EXPECT_EQ(110, freshness.oldest());
    EXPECT_TRUE(freshness.cover(5, 10, 140));
    EXPECT_EQ(120, freshness.oldest());
    EXPECT_TRUE(freshness.cover(-5, 100, 150));
    EXPECT_EQ(150, freshness.oldest());
}

TEST(Freshness, BytesOutsideTheValueDoNotCount)
{
    Freshness freshness(4);
    EXPECT_FALSE(freshness.cover(4, 8, 100));
    EXPECT_FALSE(freshness.cover(-4, 0, 100));
    EXPECT_FALSE(freshness.cover(2, 2, 100));
    EXPECT_EQ(Freshness::kNever, freshness.oldest());
    EXPECT_TRUE(freshness.cover(-1, 5, 100));
    EXPECT_EQ(100, freshness.oldest());
}

TEST(Freshness, AgreesWithAClockForEachByte)
{
    Freshness freshness(16);
    qint64 times[16];
    std::fill(std::begin(times), std::end(times), Freshness::kNever);
    quint32 random = 12345;
    for (int now = 1; now <= 2000; ++now) {
        random = quint32(random * Q_UINT64_C(1664525) + 1013904223);
        const int start = int(random >> 8 & 31) - 8;
        const int end = start + int(random >> 16 & 15);
        freshness.cover(start, end, now);
        for (int i = qMax(0, start); i < qMin(16, end); ++i)
            times[i] = now;
        ASSERT_EQ(freshness.oldest(), *std::min_element(std::begin(times), std::end(times))) << now;
    }
}

TEST(RateMeter, NeedsSomeTimeToSayAnything)
{
    RateMeter meter;
    EXPECT_EQ(0.0, meter.perSecond(0));
    meter.count(1000);
    meter.count(1100);
    EXPECT_EQ(0.0, meter.perSecond(1199));
    meter.count(1200);
    EXPECT_DOUBLE_EQ(10.0, meter.perSecond(1200));
}

TEST(RateMeter, TellsTheEventsOfTheLastSecond)
{
    RateMeter meter;
    for (int i = 0; i <= 10; ++i)
        meter.count(i * 100);
    EXPECT_DOUBLE_EQ(10.0, meter.perSecond(1000));
    EXPECT_DOUBLE_EQ(10.0, meter.perSecond(1099));
    for (int i = 1; i <= 50; ++i)
        meter.count(1000 + i * 20);
    EXPECT_DOUBLE_EQ(50.0, meter.perSecond(2000));
}

TEST(RateMeter, KnowsEventsRarerThanOneASecond)
{
    RateMeter meter;
    for (int i = 0; i < 4; ++i)
        meter.count(i * 4000);
    EXPECT_DOUBLE_EQ(0.25, meter.perSecond(12000));
    EXPECT_DOUBLE_EQ(0.25, meter.perSecond(16000));
}

TEST(RateMeter, FallsWhenNoMoreEventsCome)
{
    RateMeter meter;
    for (int i = 0; i <= 10; ++i)
        meter.count(i * 100);
    EXPECT_DOUBLE_EQ(1.0, meter.perSecond(2000));
    EXPECT_DOUBLE_EQ(0.1, meter.perSecond(11000));
}

TEST(Backoff, DoublesUpToTheLimitAndBeginsAnew)
{
    Backoff backoff(500, 3000);
    for (int delay : {500, 1000, 2000, 3000, 3000})
        EXPECT_EQ(backoff.next(), delay);
    backoff.reset();
    EXPECT_EQ(500, backoff.next());
}

TEST(Backoff, WaitsAtLeastAMillisecondAndNeverOverflows)
{
    Backoff none(0, 0);
    EXPECT_EQ(1, none.next());
    EXPECT_EQ(1, none.next());
    Backoff huge(2000000000, 2147483647);
    EXPECT_EQ(2000000000, huge.next());
    EXPECT_EQ(2147483647, huge.next());
}

class ValueTableTest : public ::testing::Test {
protected:
    static DataPoint number(const char* label, int area, int address, int elements = 1)
    {
        DataPoint point;
        point.text = point.label = QString::fromLatin1(label);
        point.type = values::findIecType(QStringLiteral("INT"));
        point.area = area;
        point.address = address;
        point.elements = elements;
        return point;
    }
    static FrameEntry entry(int area, int address, int length)
    {
        FrameEntry result;
        result.area = quint16(area);
        result.address = quint32(address);
        result.length = quint32(length);
        return result;
    }
    static ValueTable table(const QVector<DataPoint>& points)
    {
        return ValueTable(points, 3000, 998, 0);
    }
    /// A reply to a request that was sent at `sentAt`, with these data in its entries.
    static QVector<int> read(ValueTable* values, const QVector<FrameEntry>& entries,
                             const QVector<QByteArray>& blocks, qint64 sentAt)
    {
        return values->replyAccepted(entries, blocks, sentAt, sentAt + 5);
    }
    static void read(ValueTable* values, const FrameEntry& entry, qint64 sentAt)
    {
        read(values, {entry}, {QByteArray(int(entry.length), '\0')}, sentAt);
    }
};

TEST_F(ValueTableTest, EntryReachesExactlyTheValuesThatItCovers)
{
    ValueTable values =
        table({number("far", 1, 100), number("before", 1, 8), number("first", 1, 10),
               number("last", 1, 18), number("behind", 1, 20), number("elsewhere", 2, 10),
               number("partly", 1, 9)});
    read(&values, entry(1, 10, 10), 50);
    for (int row = 0; row < values.size(); ++row) {
        const QString label = values.point(row).label;
        EXPECT_EQ(values.wasRead(row),
                  label == QLatin1String("first") || label == QLatin1String("last"))
            << label.toStdString();
    }
}

TEST_F(ValueTableTest, BytesAreThoseAtItsPlaceInTheBlockMostSignificantFirst)
{
    ValueTable values = table({number("a", 1, 12)});
    read(&values, {entry(1, 0, 2), entry(1, 10, 6)}, {hex("11 22"), hex("00 01 FF FE 02 03")}, 50);
    EXPECT_EQ(hex("FE FF"), values.bytes(0));
}

TEST_F(ValueTableTest, HalvesFromTwoRepliesAreNoValue)
{
    ValueTable values = table({number("a", 1, 10)});
    read(&values, {entry(1, 10, 1)}, {hex("01")}, 50);
    read(&values, {entry(1, 11, 1)}, {hex("02")}, 60);
    read(&values, {entry(1, 10, 1)}, {hex("03")}, 70);
    EXPECT_FALSE(values.wasRead(0));
}

TEST_F(ValueTableTest, HalvesFromOneReplyAreAValue)
{
    ValueTable values = table({number("a", 1, 10)});
    read(&values, {entry(1, 10, 1), entry(1, 11, 1)}, {hex("12"), hex("34")}, 50);
    ASSERT_TRUE(values.wasRead(0));
    EXPECT_EQ(hex("34 12"), values.bytes(0));
}

TEST_F(ValueTableTest, LargeValueIsFoundFarBehindItsStart)
{
    ValueTable values = table({number("large", 1, 0, 600), number("small", 1, 1100)});
    EXPECT_TRUE(values.isPieced(0));
    EXPECT_FALSE(values.isPieced(1));
    read(&values, {entry(1, 0, 200), entry(1, 200, 200)},
         {QByteArray(200, '\0'), QByteArray(200, '\0')}, 50);
    EXPECT_FALSE(values.wasRead(0));
    read(&values, entry(1, 400, 800), 60);
    ASSERT_TRUE(values.wasRead(0));
    EXPECT_TRUE(values.reading(0, 60).isPieced);
    EXPECT_EQ(10, values.age(0, 60));
    EXPECT_TRUE(values.wasRead(1));
}

TEST_F(ValueTableTest, LongValueHoldsNoPartOfAnEarlierPass)
{
    ValueTable values = table({number("long", 1, 0, 600)});
    const auto pass = [&values](char first, char second, qint64 time) {
        read(&values, {entry(1, 0, 600)}, {QByteArray(600, first)}, time);
        const QByteArray shown = values.bytes(0);
        read(&values, {entry(1, 600, 600)}, {QByteArray(600, second)}, time + 10);
        return shown;
    };
    EXPECT_EQ(QByteArray(), pass('\1', '\1', 100));
    EXPECT_EQ(QByteArray(1200, '\1'), values.bytes(0));
    EXPECT_EQ(QByteArray(1200, '\1'), pass('\2', '\3', 200)) << "half of a pass is not shown";
    EXPECT_EQ(values.bytes(0), QByteArray(600, '\2') + QByteArray(600, '\3'));
    EXPECT_EQ(10, values.age(0, 210));
    EXPECT_EQ(2u, values.reads(0));
}

TEST_F(ValueTableTest, LongValueIsBegunAnewWhenTheLinkWasLost)
{
    ValueTable values = table({number("long", 1, 0, 600)});
    read(&values, entry(1, 0, 600), 100);
    values.linkLost();
    read(&values, entry(1, 600, 600), 200);
    EXPECT_FALSE(values.wasRead(0));
    read(&values, entry(1, 0, 600), 300);
    ASSERT_TRUE(values.wasRead(0));
    EXPECT_EQ(100, values.age(0, 300));
}

TEST_F(ValueTableTest, SamePlaceTwiceIsTwoValues)
{
    ValueTable values = table({number("a", 1, 10), number("b", 1, 10)});
    read(&values, entry(1, 10, 2), 50);
    EXPECT_TRUE(values.wasRead(0));
    EXPECT_TRUE(values.wasRead(1));
}

TEST_F(ValueTableTest, CountsReadsAndChanges)
{
    ValueTable values = table({number("a", 1, 10)});
    read(&values, {entry(1, 10, 2)}, {hex("00 01")}, 10);
    read(&values, {entry(1, 10, 2)}, {hex("00 01")}, 20);
    EXPECT_EQ(2u, values.reads(0));
    EXPECT_EQ(0u, values.changes(0)) << "the first value is no change";
    EXPECT_EQ(hex("01 00"), values.bytes(0));
    read(&values, {entry(1, 10, 2)}, {hex("00 02")}, 30);
    EXPECT_EQ(hex("02 00"), values.bytes(0));
    EXPECT_EQ(3u, values.reads(0));
    EXPECT_EQ(1u, values.changes(0));
}

TEST_F(ValueTableTest, BytesThatWereTakenStayWhenTheValueChanges)
{
    ValueTable values = table({number("a", 1, 10)});
    read(&values, {entry(1, 10, 2)}, {hex("00 01")}, 10);
    const QByteArray taken = values.bytes(0);
    read(&values, {entry(1, 10, 2)}, {hex("00 02")}, 20);
    EXPECT_EQ(hex("01 00"), taken);
    EXPECT_EQ(hex("02 00"), values.bytes(0));
}

TEST_F(ValueTableTest, LongValueDoesNotShowInAShortOneBehindIt)
{
    ValueTable values = table({number("array", 1, 0, 3), number("a", 1, 10)});
    read(&values, {entry(1, 0, 12)}, {hex("11 22 33 44 55 66 00 00 00 00 77 88")}, 10);
    EXPECT_EQ(hex("22 11 44 33 66 55"), values.bytes(0));
    EXPECT_EQ(hex("88 77"), values.bytes(1));
}

TEST_F(ValueTableTest, AgeCountsFromTheRequest)
{
    ValueTable values = table({number("a", 1, 10)});
    values.replyAccepted({entry(1, 10, 2)}, {hex("00 01")}, 500, 900);
    EXPECT_EQ(400, values.age(0, 900));
    EXPECT_EQ(3000, values.age(0, 3500));
    EXPECT_FALSE(values.isStale(0, 3500));
    EXPECT_TRUE(values.isStale(0, 3501));
    read(&values, entry(1, 10, 2), 4000);
    EXPECT_FALSE(values.isStale(0, 4000));
}

TEST_F(ValueTableTest, RefusedValueIsStaleUntilThePlcGivesItAgain)
{
    ValueTable values = table({number("a", 1, 10), number("b", 1, 12)});
    read(&values, entry(1, 10, 4), 100);
    values.refused(0, 0x31);
    EXPECT_TRUE(values.isRefused(0));
    EXPECT_EQ(0x31, values.refusalStatus(0));
    EXPECT_TRUE(values.isStale(0, 100));
    EXPECT_FALSE(values.isStale(1, 100));
    EXPECT_EQ(QVector<int>{0}, read(&values, {entry(1, 10, 4)}, {hex("00 01 00 02")}, 200))
        << "of the two, the one that had been refused";
    EXPECT_FALSE(values.isRefused(0));
    EXPECT_FALSE(values.isStale(0, 200));
}

} // namespace
} // namespace test
} // namespace plc::host
