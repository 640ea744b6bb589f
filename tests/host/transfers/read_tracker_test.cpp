#include "host/transfers/read_tracker.h"

#include "host/driver/request_records.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

constexpr int kMaxReadBytes = 200;
constexpr int kMostRefusals = 2;

/// A tracker beside a runtime, which gives the driver its settings and symbols.
class ReadTrackerTest : public HostTest {
protected:
    void add(const char* label)
    {
        OneShotRead read;
        read.tag = ++m_lastTag;
        read.point = point(label);
        tracker.add(read);
    }
    void send(int entries)
    {
        tracker.handOver(builtDriver(), 0);
        tracker.requestSent(entries);
    }

    ReadTracker tracker{kOneShotCategory, kMaxReadBytes, kMostRefusals};

private:
    int m_lastTag = 0;
};

TEST_F(ReadTrackerTest, ReadsShareARequestAsFarAsItsBudgetGoes)
{
    add("Big.block[0]*249"); // 996 bytes and one more, of 999
    add("Main.flag");        // 1 byte and one more
    send(1);
    std::vector<SettledRead> settled = tracker.requestAccepted({QByteArray(996, '\1')}, 10);
    ASSERT_EQ(1u, settled.size());
    EXPECT_EQ(QByteArray(996, '\1'), settled[0].bytes);
    send(1);
    settled = tracker.requestAccepted({hex("01")}, 20);
    ASSERT_EQ(1u, settled.size());
    EXPECT_EQ(hex("01"), settled[0].bytes);
    EXPECT_TRUE(tracker.isEmpty());
}

TEST_F(ReadTrackerTest, BlockOfAnotherReadBehindItsOwnIsNoPieceOfALongOne)
{
    add("Big.block[0]*300"); // 1200 bytes: six pieces of 200, four to a request
    send(4);
    const QByteArray first(200, '\1');
    EXPECT_TRUE(
        tracker.requestAccepted({first, first, first, first, QByteArray(1, '\x99')}, 10).empty());
    send(2);
    const QByteArray second(200, '\2');
    const std::vector<SettledRead> settled = tracker.requestAccepted({second, second}, 20);
    ASSERT_EQ(1u, settled.size());
    EXPECT_EQ(QByteArray(800, '\1') + QByteArray(400, '\2'), settled[0].bytes);
}

TEST_F(ReadTrackerTest, WhatIsAddedBeforeItIsSentGoesAlong)
{
    add("Main.speed");
    tracker.handOver(builtDriver(), 0);
    add("Main.count");
    tracker.handOver(builtDriver(), 0);
    tracker.requestSent(2);
    add("Main.word");
    tracker.handOver(builtDriver(), 0);
    EXPECT_EQ(2u, tracker.requestAccepted({hex("00 01"), hex("00 02")}, 10).size());
    send(1);
    EXPECT_EQ(1u, tracker.requestAccepted({hex("00 03")}, 20).size());
}

TEST_F(ReadTrackerTest, RefusedLongOneIsBegunAnew)
{
    add("Big.block[0]*300");
    const QByteArray block(200, '\1');
    send(4);
    tracker.requestAccepted({block, block, block, block}, 10);
    send(2);
    EXPECT_TRUE(tracker.requestRefused(2).empty());
    send(4);
    const QByteArray other(200, '\2');
    tracker.requestAccepted({other, other, other, other}, 30);
    send(2);
    const std::vector<SettledRead> settled = tracker.requestAccepted({other, other}, 40);
    ASSERT_EQ(1u, settled.size());
    EXPECT_EQ(QByteArray(1200, '\2'), settled[0].bytes) << "nothing from before the refusal";
}

} // namespace
} // namespace test
} // namespace plc::host
