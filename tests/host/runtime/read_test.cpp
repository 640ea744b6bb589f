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
    ASSERT_EQ(entries().size(), 1);
    answer(readReply({hex("FF FF FF FE")}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_TRUE(reads[0].outcome.isDone());
    EXPECT_EQ(reads[0].bytes, hex("FE FF FF FF"));
    EXPECT_EQ(actions(), "");
}

TEST_F(OneShotReadTest, AllReadsOfARequestAreSettledByItsReply)
{
    connect();
    readOnce("Main.speed");
    readOnce("Main.count");
    readOnce("Main.flag");
    logIn();
    ASSERT_EQ(entries().size(), 3);
    answer(readReply({hex("00 01"), hex("00 02"), hex("01")}));
    ASSERT_EQ(reads.size(), 3u);
    EXPECT_EQ(reads[0].bytes, hex("01 00"));
    EXPECT_EQ(reads[1].bytes, hex("02 00"));
    EXPECT_EQ(reads[2].bytes, hex("01"));
}

TEST_F(OneShotReadTest, LongOneIsSettledByItsLastPiece)
{
    connect();
    readOnce("Big.block[0]*250");
    logIn();
    // 1000 bytes at 200 a piece, of which 4 fit into the 999 bytes of one request.
    ASSERT_EQ(entries().size(), 4);
    const QByteArray block(200, '\x01');
    answer(readReply({block, block, block, block}));
    EXPECT_TRUE(reads.empty());
    ASSERT_EQ(entries().size(), 1);
    answer(readReply({QByteArray(200, '\x02')}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].bytes, QByteArray(800, '\x01') + QByteArray(200, '\x02'));
    EXPECT_EQ(actions(), "");
}

TEST_F(OneShotReadTest, ValueThatFitsIntoARequestComesInOneEntryWhateverTheSettingIs)
{
    connect();
    readOnce("Big.block[0]*249");
    logIn();
    // 996 bytes; maxReadBytes is 200.
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].address, 1000u);
    EXPECT_EQ(sentEntries[0].length, 996u);
    answer(readReply({QByteArray(996, '\x07')}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].bytes, QByteArray(996, '\x07'));
}

TEST_F(OneShotReadTest, LongOneOverSeveralRequestsWaitsForTheLast)
{
    connect();
    readOnce("Big.block[0]*300");
    logIn();
    ASSERT_EQ(entries().size(), 4);
    const QByteArray block(200, '\x07');
    answer(readReply({block, block, block, block}));
    EXPECT_TRUE(reads.empty());
    ASSERT_EQ(entries().size(), 2);
    answer(readReply({block, block}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].bytes, QByteArray(1200, '\x07'));
}

TEST_F(OneShotReadTest, RefusedAloneIsAskedForOnceMoreTwiceAndThenRefused)
{
    connect();
    readOnce("Main.speed");
    logIn();
    // The first time it may be the login that the PLC does not like.
    ASSERT_EQ(entries().size(), 1);
    answer(refusal());
    logIn();
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(entries().size(), 1);
        EXPECT_TRUE(reads.empty());
        answer(refusal());
    }
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].outcome.kind, TransferOutcome::Refused);
    EXPECT_EQ(reads[0].outcome.status, 5);
    EXPECT_TRUE(reads[0].bytes.isEmpty());
    // The driver keeps its login.
    readOnce("Main.count");
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].address, 6u);
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
    ASSERT_EQ(reads.size(), 10u);
    for (const Settled& read : reads) {
        const int index = read.label.mid(10, 1).toInt();
        if (index == 6) {
            EXPECT_EQ(read.outcome.kind, TransferOutcome::Refused);
            continue;
        }
        EXPECT_TRUE(read.outcome.isDone()) << index;
        EXPECT_EQ(read.bytes, QByteArray(1, char(4 * index)) + QByteArray(3, '\0'));
    }
    // 10 refused; 0-4 read, 5-9 refused; 5-6 refused, 5 read, 6 refused alone, 7-9 read. A login
    // behind the first.
    EXPECT_EQ(requests, 7);
}

TEST_F(OneShotReadTest, RefusalThatHasPassedHidesNothing)
{
    connect();
    readOnce("Main.speed");
    readOnce("Main.count");
    logIn();
    ASSERT_EQ(entries().size(), 2);
    answer(refusal());
    logIn();
    ASSERT_EQ(entries().size(), 1);
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(entries().size(), 1);
    answer(readReply({hex("00 02")}));
    ASSERT_EQ(reads.size(), 2u);
    EXPECT_EQ(reads[0].bytes, hex("01 00"));
    EXPECT_EQ(reads[1].bytes, hex("02 00"));
}

TEST_F(OneShotReadTest, LostLinkSettlesThem)
{
    connect();
    readOnce("Main.speed");
    logIn();
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].outcome.kind, TransferOutcome::LinkLost);
    readOnce("Main.speed");
    ASSERT_EQ(reads.size(), 2u);
    EXPECT_EQ(reads[1].outcome.kind, TransferOutcome::NotSent);
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
    EXPECT_EQ(reads.size(), 3000u);
    for (const Settled& read : reads)
        ASSERT_TRUE(read.outcome.isDone());
    // 99 entries fit into a request.
    EXPECT_EQ(requests, 31);
}

TEST_F(OneShotReadTest, MakesTheCyclicValueFreshToo)
{
    cycle({"Main.speed"});
    connect();
    readOnce("Main.speed");
    logIn();
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 08")}));
    EXPECT_EQ(shown("Main.speed"), "8");
    EXPECT_EQ(runtime->values().age(0, now), 0);
}

class CyclicReadTest : public HostTest {};

TEST_F(CyclicReadTest, NeighboursComeInOneEntry)
{
    cycle({"Main.speed", "Main.flag", "Main.real"});
    connect();
    logIn();
    // The gap of 3 bytes costs less than an entry of its own, that of 14 bytes more.
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].address, 0u);
    EXPECT_EQ(entries[0].length, 6u);
    EXPECT_EQ(entries[1].address, 20u);
    EXPECT_EQ(entries[1].length, 4u);
    answer(readReply({hex("01 00 00 00 FF FE"), hex("3F C0 00 00")}));
    EXPECT_EQ(shown("Main.speed"), "-2");
    EXPECT_EQ(shown("Main.flag"), "TRUE");
    EXPECT_EQ(shown("Main.real"), "1.5");
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
        ASSERT_EQ(actions(), "S");
        now += 10;
        answer(reply);
    }
    ASSERT_TRUE(runtime->values().wasRead(0));
    // The first part was asked for at 1000, the last came at 1030.
    EXPECT_EQ(runtime->values().age(0, now), 30);
    EXPECT_EQ(runtime->values().reads(0), 1u);
    now += 10;
    answer(reply);
    EXPECT_EQ(runtime->values().age(0, now), 40) << "shown again when the pass is whole";
}

TEST_F(CyclicReadTest, ValuesGrowStaleWhileThePlcIsAwayAndFreshAfterwards)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 05")}));
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    const ValueTable& values = runtime->values();
    EXPECT_EQ(values.age(0, now), 1000);
    EXPECT_FALSE(values.isStale(0, now + 2000));
    EXPECT_TRUE(values.isStale(0, now + 2001));
    reconnect(2500);
    ASSERT_EQ(actions(), "S");
    EXPECT_TRUE(values.isStale(0, now));
    EXPECT_EQ(shown("Main.speed"), "5");
    answer(readReply({hex("00 06")}));
    EXPECT_FALSE(values.isStale(0, now));
    EXPECT_EQ(values.changes(0), 1u);
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
    ASSERT_EQ(actions(), "S");
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
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].address, 0u);
    EXPECT_EQ(entries[0].length, 5u);
    answer(readReply({hex("00 08 80 01 0A")}));
    EXPECT_EQ(shown("Io.start"), "TRUE");
    EXPECT_EQ(shown("Io.lamp[0]*20"),
              "[TRUE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, FALSE, "
              "FALSE, FALSE, FALSE, TRUE, FALSE, TRUE, FALSE, TRUE]");
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
    ASSERT_EQ(actions(), "S");
    runtime->switchStation(0, false, now);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(actions(), "");
    passTime(100000);
    EXPECT_EQ(actions(), "");
    EXPECT_TRUE(runtime->values().isStale(0, now));
    runtime->switchStation(0, true, now);
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 02")}));
    EXPECT_EQ(shown("Main.speed"), "2");
}

TEST_F(StationTest, OffTakesNoWrites)
{
    ASSERT_EQ(actions(), "S");
    runtime->switchStation(0, false, now);
    write("Main.speed", "1");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "station 0 is switched off");
    readOnce("Main.speed");
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].outcome.reason, "station 0 is switched off");
}

TEST_F(StationTest, WritesUnderWayAreCarriedOutBeforeItGoesOff)
{
    ASSERT_EQ(actions(), "S");
    write("Main.speed", "1");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(actions(), "S");
    ASSERT_EQ(int(uchar(sent[6])), 0x3C);
    write("Main.speed", "2");
    runtime->switchStation(0, false, now);
    // The second was waiting for the first.
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    answer(refusal());
    ASSERT_EQ(actions(), "S") << "the retry belongs to it";
    acknowledgeAgain();
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_TRUE(writes[1].outcome.isDone());
    EXPECT_EQ(actions(), "");
}

TEST_F(StationTest, ReadsThatWereBegunAreSettledBeforeItGoesOff)
{
    readOnce("Big.block[0]*300");
    readOnce("Main.count");
    answerWithZeros();
    // Four of six pieces.
    ASSERT_EQ(parseRequest(request()).entries.size(), 4);
    runtime->switchStation(0, false, now);
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(reads[0].outcome.kind, TransferOutcome::NotSent);
    const QByteArray block(200, '\0');
    answer(readReply({block, block, block, block}));
    ASSERT_EQ(parseRequest(request()).entries.size(), 2);
    answer(readReply({block, block}));
    ASSERT_EQ(reads.size(), 2u);
    EXPECT_TRUE(reads[1].outcome.isDone());
    EXPECT_EQ(actions(), "");
}

TEST_F(StationTest, ReadThatIsRefusedMeanwhileIsSettledBeforeItGoesOff)
{
    readOnce("Main.count");
    answerWithZeros();
    ASSERT_EQ(parseRequest(request()).entries.size(), 1);
    runtime->switchStation(0, false, now);
    answer(refusal());
    // It is asked for once more.
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 02")}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_TRUE(reads[0].outcome.isDone());
    EXPECT_EQ(actions(), "");
}

TEST_F(StationTest, OtherStationsAreNotTouched)
{
    ASSERT_EQ(actions(), "S");
    runtime->switchStation(7, false, now);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(actions(), "S");
}

TEST_F(StationTest, LinkIsMadeAnewWhileItIsOff)
{
    ASSERT_EQ(actions(), "S");
    runtime->switchStation(0, false, now);
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    EXPECT_EQ(actions(), "");
    runtime->switchStation(0, true, now);
    logIn();
    EXPECT_EQ(actions(), "S");
}

} // namespace
} // namespace test
} // namespace plc::host
