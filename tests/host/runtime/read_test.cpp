#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// Nothing is read cyclically, so that each request carries what the test queues.
class OneShotReadTest : public HostTest {
protected:
    QVector<FrameEntry> entries() { return parseRequest(request()).entries; }
};

TEST_F(OneShotReadTest, GivesTheValueOfTheReply)
{
    connect();
    readOnce("Main.long");
    logIn();
    ASSERT_EQ(1, entries().size());
    answer(readReply({hex("FF FF FF FE")}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_TRUE(reads[0].outcome.isDone());
    EXPECT_EQ(hex("FE FF FF FF"), reads[0].bytes);
    EXPECT_EQ("", actions());
}

TEST_F(OneShotReadTest, AllReadsOfARequestAreSettledByItsReply)
{
    connect();
    readOnce("Main.speed");
    readOnce("Main.count");
    readOnce("Main.flag");
    logIn();
    ASSERT_EQ(3, entries().size());
    answer(readReply({hex("00 01"), hex("00 02"), hex("01")}));
    ASSERT_EQ(3u, reads.size());
    EXPECT_EQ(hex("01 00"), reads[0].bytes);
    EXPECT_EQ(hex("02 00"), reads[1].bytes);
    EXPECT_EQ(hex("01"), reads[2].bytes);
}

TEST_F(OneShotReadTest, LongOneIsSettledByItsLastPiece)
{
    connect();
    readOnce("Big.block[0]*250");
    logIn();
    // 1000 bytes at 200 a piece, of which 4 fit into the 999 bytes of one request.
    ASSERT_EQ(4, entries().size());
    const QByteArray block(200, '\x01');
    answer(readReply({block, block, block, block}));
    EXPECT_TRUE(reads.empty());
    ASSERT_EQ(1, entries().size());
    answer(readReply({QByteArray(200, '\x02')}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(reads[0].bytes, QByteArray(800, '\x01') + QByteArray(200, '\x02'));
    EXPECT_EQ("", actions());
}

TEST_F(OneShotReadTest, ValueThatFitsIntoARequestComesInOneEntryWhateverTheSettingIs)
{
    connect();
    readOnce("Big.block[0]*249");
    logIn();
    // 996 bytes; maxReadBytes is 200.
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(1000u, sentEntries[0].address);
    EXPECT_EQ(996u, sentEntries[0].length);
    answer(readReply({QByteArray(996, '\x07')}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(QByteArray(996, '\x07'), reads[0].bytes);
}

TEST_F(OneShotReadTest, LongOneOverSeveralRequestsWaitsForTheLast)
{
    connect();
    readOnce("Big.block[0]*300");
    logIn();
    ASSERT_EQ(4, entries().size());
    const QByteArray block(200, '\x07');
    answer(readReply({block, block, block, block}));
    EXPECT_TRUE(reads.empty());
    ASSERT_EQ(2, entries().size());
    answer(readReply({block, block}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(QByteArray(1200, '\x07'), reads[0].bytes);
}

TEST_F(OneShotReadTest, RefusedAloneIsAskedForOnceMoreTwiceAndThenRefused)
{
    connect();
    readOnce("Main.speed");
    logIn();
    // The first time it may be the login that the PLC does not like.
    ASSERT_EQ(1, entries().size());
    answer(refusal());
    logIn();
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(1, entries().size());
        EXPECT_TRUE(reads.empty());
        answer(refusal());
    }
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(TransferOutcome::Refused, reads[0].outcome.kind);
    EXPECT_EQ(5, reads[0].outcome.status);
    EXPECT_TRUE(reads[0].bytes.isEmpty());
    // The driver keeps its login.
    readOnce("Main.count");
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(6u, sentEntries[0].address);
}

TEST_F(OneShotReadTest, RefusedOneIsFoundByHalvesAndAllOthersAreRead)
{
    connect();
    std::vector<std::string> labels;
    for (int i = 0; i < 10; ++i)
        labels.push_back("Big.block[" + std::to_string(i) + "]");
    for (const std::string& label : labels)
        readOnce(label.c_str());
    logIn();
    const quint32 wrong = 1000 + 4 * 6;
    int requests = 0;
    while (actions() == "S") {
        const RequestContent content = parseRequest(sent);
        if (content.isLogin()) {
            answer(content.service == Service::File ? fileReply() : identificationReply());
            continue;
        }
        ++requests;
        QByteArray payload(6, '\0');
        bool isRefused = false;
        for (const FrameEntry& entry : parseRequest(sent).entries) {
            isRefused = isRefused || entry.address == wrong;
            payload += QByteArray(1, '\0') + QByteArray(3, '\0') + char(entry.address - 1000);
        }
        answer(isRefused ? refusal() : frameOf(payload));
    }
    ASSERT_EQ(10u, reads.size());
    for (const Settled& read : reads) {
        const int index = read.label.mid(10, 1).toInt();
        if (index == 6) {
            EXPECT_EQ(TransferOutcome::Refused, read.outcome.kind);
            continue;
        }
        EXPECT_TRUE(read.outcome.isDone()) << index;
        EXPECT_EQ(read.bytes, QByteArray(1, char(4 * index)) + QByteArray(3, '\0'));
    }
    // 10 refused; 0-4 read, 5-9 refused; 5-6 refused, 5 read, 6 refused alone, 7-9 read. A login
    // behind the first.
    EXPECT_EQ(7, requests);
}

TEST_F(OneShotReadTest, RefusalThatHasPassedHidesNothing)
{
    connect();
    readOnce("Main.speed");
    readOnce("Main.count");
    logIn();
    ASSERT_EQ(2, entries().size());
    answer(refusal());
    logIn();
    ASSERT_EQ(1, entries().size());
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(1, entries().size());
    answer(readReply({hex("00 02")}));
    ASSERT_EQ(2u, reads.size());
    EXPECT_EQ(hex("01 00"), reads[0].bytes);
    EXPECT_EQ(hex("02 00"), reads[1].bytes);
}

TEST_F(OneShotReadTest, LostLinkSettlesThem)
{
    connect();
    readOnce("Main.speed");
    logIn();
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(TransferOutcome::LinkLost, reads[0].outcome.kind);
    readOnce("Main.speed");
    ASSERT_EQ(2u, reads.size());
    EXPECT_EQ(TransferOutcome::NotSent, reads[1].outcome.kind);
}

TEST_F(OneShotReadTest, MoreThanTheDriverQueuesAreAllCarriedOut)
{
    connect();
    for (int round = 0; round < 5; ++round) {
        for (int i = 0; i < 600; ++i)
            readOnce(("Big.block[" + std::to_string(i) + "]").c_str());
    }
    logIn();
    int requests = 0;
    while (actions() == "S") {
        const RequestContent content = parseRequest(sent);
        if (content.isLogin()) {
            answer(content.service == Service::File ? fileReply() : identificationReply());
            continue;
        }
        ++requests;
        QByteArray payload(6, '\0');
        for (const FrameEntry& entry : parseRequest(sent).entries)
            payload += QByteArray(1 + int(entry.length), '\0');
        answer(frameOf(payload));
    }
    EXPECT_EQ(3000u, reads.size());
    for (const Settled& read : reads)
        ASSERT_TRUE(read.outcome.isDone());
    // 99 entries fit into a request.
    EXPECT_EQ(31, requests);
}

TEST_F(OneShotReadTest, MakesTheCyclicValueFreshToo)
{
    cycle({"Main.speed"});
    connect();
    readOnce("Main.speed");
    logIn();
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 08")}));
    EXPECT_EQ("8", shown("Main.speed"));
    EXPECT_EQ(0, runtime->values().age(0, now));
}

class CyclicReadTest : public HostTest {};

TEST_F(CyclicReadTest, NeighboursComeInOneEntry)
{
    cycle({"Main.speed", "Main.flag", "Main.real"});
    connect();
    logIn();
    // The gap of 3 bytes costs less than an entry of its own, that of 14 bytes more.
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(2, entries.size());
    EXPECT_EQ(0u, entries[0].address);
    EXPECT_EQ(6u, entries[0].length);
    EXPECT_EQ(20u, entries[1].address);
    EXPECT_EQ(4u, entries[1].length);
    answer(readReply({hex("01 00 00 00 FF FE"), hex("3F C0 00 00")}));
    EXPECT_EQ("-2", shown("Main.speed"));
    EXPECT_EQ("TRUE", shown("Main.flag"));
    EXPECT_EQ("1.5", shown("Main.real"));
}

TEST_F(CyclicReadTest, ValueOfTwoRequestsIsAsOldAsTheOlderPart)
{
    // 2,400 bytes in entries of 200, of which 4 go into one request.
    cycle({"Big.block[0]*600"});
    connect();
    logIn();
    const QByteArray block(200, '\x01');
    const QByteArray reply = readReply({block, block, block, block});
    for (int part = 0; part < 3; ++part) {
        ASSERT_FALSE(runtime->values().wasRead(0));
        ASSERT_EQ("S", actions());
        now += 10;
        answer(reply);
    }
    ASSERT_TRUE(runtime->values().wasRead(0));
    // The first part was asked for at 1000, the last came at 1030.
    EXPECT_EQ(30, runtime->values().age(0, now));
    EXPECT_EQ(1u, runtime->values().reads(0));
    now += 10;
    answer(reply);
    EXPECT_EQ(40, runtime->values().age(0, now)) << "shown again when the pass is whole";
}

TEST_F(CyclicReadTest, ValuesGrowStaleWhileThePlcIsAwayAndFreshAfterwards)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 05")}));
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    const ValueTable& values = runtime->values();
    EXPECT_EQ(1000, values.age(0, now));
    EXPECT_FALSE(values.isStale(0, now + 2000));
    EXPECT_TRUE(values.isStale(0, now + 2001));
    reconnect(2500);
    ASSERT_EQ("S", actions());
    EXPECT_TRUE(values.isStale(0, now));
    EXPECT_EQ("5", shown("Main.speed"));
    answer(readReply({hex("00 06")}));
    EXPECT_FALSE(values.isStale(0, now));
    EXPECT_EQ(1u, values.changes(0));
}

TEST_F(CyclicReadTest, ValueThatWasNeverReadIsStaleInTheEnd)
{
    cycle({"Main.speed"});
    EXPECT_FALSE(runtime->values().isStale(0, now + 3000));
    EXPECT_TRUE(runtime->values().isStale(0, now + 3001));
}

TEST_F(CyclicReadTest, RefusedReadMakesNothingFresh)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    ASSERT_EQ("S", actions());
    answer(refusal());
    EXPECT_FALSE(runtime->values().wasRead(0));
}

TEST_F(CyclicReadTest, ValueIsNeverCutBetweenTwoRequests)
{
    // 20 values of 84 bytes, which maxReadBytes of 200 would cut; 11 fit into one request.
    QVector<DataPoint> points;
    for (int i = 0; i < 20; ++i)
        points.append(point(qPrintable(QStringLiteral("Big.block[%1]*21").arg(21 * i))));
    runtime->readCyclically(points, now);
    connect();
    logIn();
    for (int round = 1; round < 50; ++round) {
        const RequestContent content = parseRequest(request());
        QByteArray payload(6, '\0');
        for (const FrameEntry& entry : content.entries)
            payload += QByteArray(1 + int(entry.length), char(round));
        answer(frameOf(payload));
        for (int row = 0; row < 20; ++row) {
            const QByteArray bytes = runtime->values().bytes(row);
            EXPECT_EQ(bytes, QByteArray(bytes.size(), bytes.isEmpty() ? '\0' : bytes[0])) << round;
            ASSERT_TRUE(round <= 2 || bytes.size() == 84) << row;
        }
    }
}

TEST_F(CyclicReadTest, BitsAreReadWithTheirWords)
{
    cycle({"Io.start", "Io.lamp[0]*20"});
    connect();
    logIn();
    // Bit 3 lies in the word of bytes 0 and 1, bits 32 to 51 in those of bytes 2, 3 and 4.
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(1, entries.size());
    EXPECT_EQ(0u, entries[0].address);
    EXPECT_EQ(5u, entries[0].length);
    answer(readReply({hex("00 08 80 01 0A")}));
    EXPECT_EQ("TRUE", shown("Io.start"));
    EXPECT_EQ(
        "[TRUE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, "
        "FALSE, FALSE, FALSE, TRUE, FALSE, TRUE, FALSE, TRUE]",
        shown("Io.lamp[0]*20"));
}

class StationTest : public HostTest {
protected:
    StationTest()
    {
        cycle({"Main.speed"});
        connect();
        logIn();
    }
};

TEST_F(StationTest, OffIsReadNoMoreUntilItIsOn)
{
    ASSERT_EQ("S", actions());
    runtime->switchStation(0, false, now);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ("", actions());
    passTime(100000);
    EXPECT_EQ("", actions());
    EXPECT_TRUE(runtime->values().isStale(0, now));
    runtime->switchStation(0, true, now);
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 02")}));
    EXPECT_EQ("2", shown("Main.speed"));
}

TEST_F(StationTest, OffTakesNoWrites)
{
    ASSERT_EQ("S", actions());
    runtime->switchStation(0, false, now);
    write("Main.speed", "1");
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("station 0 is switched off", writes[0].outcome.reason);
    readOnce("Main.speed");
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ("station 0 is switched off", reads[0].outcome.reason);
}

TEST_F(StationTest, OffTakesNoWritesFromOutcomesOfThoseThatItEnds)
{
    ASSERT_EQ("S", actions());
    runtime->write(point("Main.speed"), {values::Value(qint64(1))}, now,
                   [this](const TransferOutcome&) {
                       write("Main.count", "2");
                       readOnce("Main.count");
                   });
    runtime->readOnce(point("Main.speed"), now, [this](const TransferOutcome&, const QByteArray&) {
        write("Main.count", "3");
        readOnce("Main.count");
    });
    runtime->switchStation(0, false, now);
    EXPECT_EQ(2u, writes.size());
    EXPECT_EQ(2u, reads.size());
    answer(readReply({hex("00 01")}));
    EXPECT_EQ("", actions());
    EXPECT_EQ(0, runtime->openWrites());
}

TEST_F(StationTest, WritesUnderWayAreCarriedOutBeforeItGoesOff)
{
    ASSERT_EQ("S", actions());
    write("Main.speed", "1");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ("S", actions());
    ASSERT_EQ(0x3C, int(uchar(sent[6])));
    write("Main.speed", "2");
    runtime->switchStation(0, false, now);
    // The second was waiting for the first.
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    answer(refusal());
    ASSERT_EQ("S", actions()) << "the retry belongs to it";
    acknowledgeAgain();
    ASSERT_EQ(2u, writes.size());
    EXPECT_TRUE(writes[1].outcome.isDone());
    EXPECT_EQ("", actions());
}

TEST_F(StationTest, ReadsThatWereBegunAreSettledBeforeItGoesOff)
{
    readOnce("Big.block[0]*300");
    readOnce("Main.count");
    answerWithZeros();
    // Four of six pieces.
    ASSERT_EQ(4, parseRequest(request()).entries.size());
    runtime->switchStation(0, false, now);
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(TransferOutcome::NotSent, reads[0].outcome.kind);
    const QByteArray block(200, '\0');
    answer(readReply({block, block, block, block}));
    ASSERT_EQ(2, parseRequest(request()).entries.size());
    answer(readReply({block, block}));
    ASSERT_EQ(2u, reads.size());
    EXPECT_TRUE(reads[1].outcome.isDone());
    EXPECT_EQ("", actions());
}

TEST_F(StationTest, ReadThatIsRefusedMeanwhileIsSettledBeforeItGoesOff)
{
    readOnce("Main.count");
    answerWithZeros();
    ASSERT_EQ(1, parseRequest(request()).entries.size());
    runtime->switchStation(0, false, now);
    answer(refusal());
    // It is asked for once more.
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 02")}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_TRUE(reads[0].outcome.isDone());
    EXPECT_EQ("", actions());
}

TEST_F(StationTest, OtherStationsAreNotTouched)
{
    ASSERT_EQ("S", actions());
    runtime->switchStation(7, false, now);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ("S", actions());
}

TEST_F(StationTest, LinkIsMadeAnewWhileItIsOff)
{
    ASSERT_EQ("S", actions());
    runtime->switchStation(0, false, now);
    passTime(1000);
    ASSERT_EQ("X", actions());
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    EXPECT_EQ("", actions());
    runtime->switchStation(0, true, now);
    logIn();
    EXPECT_EQ("S", actions());
}

} // namespace
} // namespace test
} // namespace plc::host
