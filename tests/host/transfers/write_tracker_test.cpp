#include "host/transfers/write_tracker.h"

#include "host/driver/request_records.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

constexpr Tag kMostReported = 0x7FFFFFFF; // of a number of the driver

/// What the driver was given last.
int g_reported = -1;

int keepTag(const QString&, int, const QString&, int, QByteArray*, int, int, int aux1)
{
    g_reported = aux1;
    return 0;
}

/// A tracker before a driver that only keeps the number by which it is to report.
class WriteTrackerTest : public HostTest {
protected:
    WriteTrackerTest() { driver.setRegisterData = &keepTag; }

    void add(const char* label, Tag tag)
    {
        const DataPoint target = point(label);
        const Expected<QVector<values::Value>> values = parsePoint(target, QStringLiteral("1"));
        ASSERT_TRUE(values);
        Write write;
        write.tag = tag;
        write.label = target.label;
        write.station = target.station;
        write.buffer = *encodeValues(target, *values);
        write.pieces = WritePieces(target, write.buffer.wireBytes);
        tracker.add(std::move(write));
        tracker.handOver(driver);
    }
    QVector<Tag> takeReported(int reported)
    {
        QVector<Tag> tags;
        for (const Write& write : tracker.takeReported(reported))
            tags.append(write.tag);
        return tags;
    }

    DriverFunctions driver;
    WriteTracker tracker;
};

TEST_F(WriteTrackerTest, TakesTheWriteThatTheDriverReports)
{
    add("Main.speed", 1);
    EXPECT_EQ(g_reported, 1);
    add("Main.count", 2);
    EXPECT_EQ(g_reported, 2);
    EXPECT_EQ(takeReported(2), QVector<Tag>{2});
    EXPECT_EQ(takeReported(2), QVector<Tag>());
    EXPECT_EQ(takeReported(1), QVector<Tag>{1});
    EXPECT_FALSE(tracker.hasUnderWay());
}

TEST_F(WriteTrackerTest, NumbersForTheDriverBeginAgainBehindItsLastOneAndTheWritesKeepTheirOrder)
{
    add("Main.speed", kMostReported);
    EXPECT_EQ(g_reported, 0x7FFFFFFF);
    add("Main.count", kMostReported + 1);
    EXPECT_EQ(g_reported, 0);
    add("Big.far", kMostReported + 2);
    EXPECT_EQ(g_reported, 1);
    EXPECT_EQ(takeReported(0), QVector<Tag>{kMostReported + 1});
    EXPECT_EQ(takeReported(0x7FFFFFFF), QVector<Tag>{kMostReported});
    EXPECT_EQ(takeReported(1), QVector<Tag>{kMostReported + 2});
}

TEST_F(WriteTrackerTest, WritesOfAnyTagAreSettledByTheFramesThatCarryThem)
{
    add("Main.speed", kMostReported);
    add("Main.count", kMostReported + 1);
    QVector<FrameEntry> entries;
    for (const char* label : {"Main.speed", "Main.count"}) {
        const DataPoint target = point(label);
        FrameEntry entry;
        static_cast<FramePlace&>(entry) = WritePieces(target, target.type->size).first();
        entries.append(entry);
    }
    tracker.requestSent(entries);
    const std::vector<Write> settled = tracker.requestAccepted();
    ASSERT_EQ(settled.size(), 2U);
    EXPECT_EQ(settled[0].tag, kMostReported);
    EXPECT_EQ(settled[1].tag, kMostReported + 1);
}

} // namespace
} // namespace test
} // namespace plc::host
