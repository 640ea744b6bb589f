#include "tests/host/runtime/write_fixture.h"

namespace plc::host {
namespace test {
namespace {

TEST_F(WriteTest, SecondToTheSamePlaceWaitsForTheFirst)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    write("Main.speed", "3");
    logIn();
    for (int value = 1; value <= 3; ++value) {
        const QVector<FrameEntry> sentEntries = entries();
        ASSERT_EQ(1, sentEntries.size()) << value;
        EXPECT_EQ(QByteArray("\0", 1) + char(value), writtenBytes(sent, sentEntries[0]));
        answer(writeReply());
        if (value > 1)
            answerWithZeros();
        ASSERT_EQ(writes.size(), size_t(value));
    }
    EXPECT_EQ("", actions());
}

TEST_F(WriteTest, SameAddressInAnotherAreaIsTheSamePlaceForTheDriver)
{
    // Main.speed is at address 4 of area 1, Big.same at address 4 of area 2. A first write holds
    // the head of the driver's list, where nothing is replaced.
    connect();
    write("Main.count", "9");
    write("Main.speed", "1");
    write("Big.same", "2");
    logIn();
    ASSERT_EQ(2, entries().size());
    answer(writeReply());
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(2, sentEntries[0].area);
    acknowledgeAgain();
    EXPECT_EQ((std::vector<std::string>{"Main.count", "Main.speed", "Big.same"}), settledLabels());
}

TEST_F(WriteTest, OverlappingPlacesKeepTheirOrder)
{
    connect();
    write("Main.bytes[0]*4", "1,2,3,4");
    write("Main.bytes[3]*2", "5,6");
    logIn();
    ASSERT_EQ(1, entries().size());
    answer(writeReply());
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(303u, sentEntries[0].address);
}

TEST_F(WriteTest, NeighboursGoTogether)
{
    connect();
    write("Main.bytes[0]*4", "1,2,3,4");
    write("Main.bytes[4]*2", "5,6");
    logIn();
    EXPECT_EQ(2, entries().size());
}

TEST_F(WriteTest, BitsAreNeverInTheDriverTogetherWithOthers)
{
    connect();
    write("Io.start", "1");
    write("Main.speed", "1");
    write("Io.lamp[1]", "0");
    logIn();
    EXPECT_EQ(hex("BB BB 00 00 00 15 3C 00 00 00 00 01 00 00 00 00 00 03 00 00 00 00"
                  "01 00 01 00 00"),
              request());
    answer(writeReply());
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02"
                  "00 01 00 01 00 00"),
              request());
    acknowledgeAgain();
    EXPECT_EQ(hex("BB BB 00 00 00 15 3C 00 00 00 00 01 00 00 00 00 00 21 00 00 00 00"
                  "00 00 01 00 00"),
              request());
    acknowledgeAgain();
    EXPECT_EQ((std::vector<std::string>{"Io.start", "Main.speed", "Io.lamp[1]"}), settledLabels());
}

TEST_F(WriteTest, SingleBitsGoTogether)
{
    connect();
    write("Io.start", "1");
    write("Io.lamp[1]", "1");
    logIn();
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(2, sentEntries.size());
    EXPECT_TRUE(sentEntries[0].isBit);
    EXPECT_TRUE(sentEntries[1].isBit);
    answer(writeReply());
    EXPECT_EQ(2u, writes.size());
}

TEST_F(WriteTest, MoreThanTheDriverQueuesAreAllCarriedOut)
{
    connect();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 600; ++i)
            write(("Big.block[" + std::to_string(i) + "]").c_str(), "1");
    }
    logIn();
    int requests = 0;
    while (actions() == "S") {
        if (parseRequest(sent).service == Service::Read) {
            answer(readReply({QByteArray(int(parseRequest(sent).entries[0].length), '\0')}));
            continue;
        }
        ++requests;
        answer(writeReply());
    }
    EXPECT_EQ(1800u, writes.size());
    for (const Settled& write : writes)
        ASSERT_TRUE(write.outcome.isDone());
    // 71 entries of 4 bytes fit into a request (71 x 14 = 994), and the rounds follow each other
    // without a gap.
    EXPECT_EQ(26, requests);
}

TEST_F(WriteTest, ReadsGetTheirTurnBesideWritesWithoutEnd)
{
    connectAndLogInFor("Main.count", "0");
    readOnce("Main.speed");
    // Another write waits whenever one goes out.
    const int writeRequests = writesUntilRead([this] { write("Main.count", "1"); });
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(hex("05 05"), reads[0].bytes);
    // Five in a row, and what the driver has already: one, since all go to the same place.
    EXPECT_GE(6, writeRequests);
    EXPECT_LE(5, writeRequests);
}

TEST_F(WriteTest, ReadsGetTheirTurnAmongHundredsThatWait)
{
    connect();
    for (int i = 0; i < 600; ++i)
        write(("Big.block[" + std::to_string(i) + "]").c_str(), "1");
    readOnce("Main.speed");
    logIn();
    const int writeRequests = writesUntilRead([] {});
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(hex("05 05"), reads[0].bytes);
    // Five in a row, of 71 entries each, and the 19 that the driver had beyond them.
    EXPECT_EQ(6, writeRequests);
    EXPECT_EQ(374u, writes.size());
    for (const Settled& write : writes)
        EXPECT_TRUE(write.outcome.isDone());
}

TEST_F(WriteTest, QueuedFromTheOutcomeOfAnotherFollowsAtOnce)
{
    connect();
    runtime->write(point("Main.speed"), {values::Value(qint64(1))}, now,
                   [this](const TransferOutcome&) { write("Main.count", "2"); });
    logIn();
    ASSERT_EQ(1, entries().size());
    answer(writeReply());
    EXPECT_EQ(6u, entries()[0].address);
    acknowledgeAgain();
    EXPECT_EQ(1u, writes.size());
    EXPECT_EQ("", actions());
}

} // namespace
} // namespace test
} // namespace plc::host
