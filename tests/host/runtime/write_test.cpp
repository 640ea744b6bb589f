#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// Nothing is read cyclically, so that each request carries what the test queues.
class WriteTest : public HostTest {
protected:
    void connectAndLogInFor(const char* label, const char* value)
    {
        connect();
        write(label, value);
        logIn();
    }
    /// The entries of the request that went out.
    QVector<FrameEntry> entries() { return parseRequest(request()).entries; }
    std::vector<std::string> settledLabels() const
    {
        std::vector<std::string> labels;
        for (const Settled& write : writes)
            labels.push_back(write.label.toStdString());
        return labels;
    }
};

TEST_F(WriteTest, GoesOutAndIsDoneWhenThePlcSaysSo)
{
    connectAndLogInFor("Main.speed", "-2");
    EXPECT_EQ(request(), hex("BB BB 00 00 00 16 3C 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02"
                             "FF FE 00 01 00 00"));
    EXPECT_TRUE(writes.empty());
    answer(writeReply());
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, InAReadOnlyProjectEndsAtOnceUnsent)
{
    RuntimeSettings readOnly = settings();
    readOnly.readOnly = true;
    runtime.reset();
    runtime = std::make_unique<Runtime>(builtDriver(), readOnly, project, this);
    connect();
    write("Main.speed", "1");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason,
              "the project is read-only, by its setting readOnly or by --read-only");
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(parseRequest(request()).service, Service::Read) << "reads go on";
    runtime.reset();
}

TEST_F(WriteTest, QueuedBeforeTheFirstConnectionWaitsForIt)
{
    write("Main.speed", "1");
    EXPECT_TRUE(writes.empty());
    connect();
    logIn();
    ASSERT_EQ(entries().size(), 1);
    answer(writeReply());
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, AllWritesOfARequestAreSettledByItsReply)
{
    connect();
    write("Main.speed", "1");
    write("Main.count", "2");
    write("Main.real", "3.5");
    // The login was already under way for the first of them.
    logIn();
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 3);
    EXPECT_EQ(sentEntries[2].data, hex("40 60 00 00"));
    answer(writeReply());
    EXPECT_EQ(settledLabels(), (std::vector<std::string>{"Main.speed", "Main.count", "Main.real"}));
    for (const Settled& write : writes)
        EXPECT_TRUE(write.outcome.isDone());
}

TEST_F(WriteTest, AllWritesOfARequestFailWithIt)
{
    connect();
    write("Main.speed", "1");
    write("Main.count", "2");
    logIn();
    ASSERT_EQ(entries().size(), 2);
    for (int i = 0; i < 2; ++i) {
        answer(refusal());
        ASSERT_TRUE(writes.empty());
        ASSERT_EQ(entries().size(), 2);
    }
    answer(refusal());
    // It looks like the refusals before it, and like copies of them, until the login is answered.
    EXPECT_TRUE(writes.empty());
    request();
    answer(identificationReply());
    ASSERT_EQ(settledLabels(), (std::vector<std::string>{"Main.speed", "Main.count"}));
    for (const Settled& write : writes) {
        EXPECT_EQ(write.outcome.kind, TransferOutcome::Refused);
        // 10 for a reply that is no good answer, and 2 for a write.
        EXPECT_EQ(write.outcome.result, 12);
        EXPECT_EQ(write.outcome.status, 5);
        EXPECT_EQ(write.outcome.taken, 0);
    }
}

TEST_F(WriteTest, ReadThatFollowsItsLoginSharesNoRequestWithTheOneThatIsNoLongerNeeded)
{
    connectAndLogInFor("Main.speed", "1");
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ("S", actions());
        answer(refusal());
    }
    // The login shows that the refusal was the write's own, before the read that was to show it.
    request();
    answer(identificationReply());
    ASSERT_EQ(1u, writes.size());
    readOnce("Main.count");
    request();
    answer(fileReply());
    QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(1u, sentEntries[0].length);
    answer(readReply({hex("99")}));
    sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(6u, sentEntries[0].address);
    answer(readReply({hex("00 07")}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(hex("07 00"), reads[0].bytes);
}

TEST_F(WriteTest, RetryThatIsAcceptedIsDone)
{
    connectAndLogInFor("Main.speed", "1");
    ASSERT_EQ(actions(), "S");
    answer(refusal());
    ASSERT_EQ(actions(), "S");
    acknowledgeAgain();
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, LongOneGoesInPiecesAndIsSettledByTheLast)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    QVector<FrameEntry> piece = entries();
    ASSERT_EQ(piece.size(), 1);
    EXPECT_EQ(piece[0].address, 1000u);
    EXPECT_EQ(piece[0].length, 1000u);
    EXPECT_EQ(piece[0].data.right(4), hex("00 00 00 FA")); // element 250
    answer(writeReply());
    EXPECT_TRUE(writes.empty());
    piece = entries();
    ASSERT_EQ(piece.size(), 1);
    EXPECT_EQ(piece[0].address, 2000u);
    answer(writeReply());
    EXPECT_TRUE(writes.empty());
    piece = entries();
    ASSERT_EQ(piece.size(), 1);
    EXPECT_EQ(piece[0].address, 3000u);
    EXPECT_EQ(piece[0].length, 400u);
    acknowledgeAgain();
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
    EXPECT_EQ(actions(), "");
}

TEST_F(WriteTest, LongOneThatFailsIsNotContinued)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    ASSERT_EQ(actions(), "S");
    answer(writeReply());
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(actions(), "S");
        answer(refusal());
    }
    logIn();
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::Refused);
    EXPECT_EQ(writes[0].outcome.taken, 250) << "1000 bytes of DINTs";
    answerWithZeros(); // to the read that would have shown what the login has
    EXPECT_EQ(actions(), "") << "the third piece was sent";
}

TEST_F(WriteTest, LongOneThatIsLostTellsWhatWasTakenBefore)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    ASSERT_EQ(actions(), "S");
    answer(writeReply());
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::LinkLost);
    EXPECT_EQ(writes[0].outcome.taken, 250);
}

TEST_F(WriteTest, LongOneThatIsLostDoesNotCountWhatIsDoubted)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    ASSERT_EQ("S", actions());
    answer(writeReply());
    ASSERT_EQ("S", actions());
    answer(writeReply()); // perhaps a copy of the first one
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    EXPECT_EQ(250, writes[0].outcome.taken);
}

TEST_F(WriteTest, LongOneGoesAlone)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 300; ++i)
        numbers += ',' + QByteArray::number(i);
    connect();
    write("Main.speed", "1");
    write("Big.block[0]*300", numbers.constData());
    write("Main.count", "2");
    logIn();
    QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].address, 4u);
    answer(writeReply());
    sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].length, 1000u);
    answer(writeReply());
    sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].length, 200u);
    acknowledgeAgain();
    sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].address, 6u);
    acknowledgeAgain();
    EXPECT_EQ(settledLabels(),
              (std::vector<std::string>{"Main.speed", "Big.block[0]*300", "Main.count"}));
}

TEST_F(WriteTest, SecondToTheSamePlaceWaitsForTheFirst)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    write("Main.speed", "3");
    logIn();
    for (int value = 1; value <= 3; ++value) {
        const QVector<FrameEntry> sentEntries = entries();
        ASSERT_EQ(sentEntries.size(), 1) << value;
        EXPECT_EQ(sentEntries[0].data, QByteArray("\0", 1) + char(value));
        answer(writeReply());
        if (value > 1)
            answerWithZeros();
        ASSERT_EQ(writes.size(), size_t(value));
    }
    EXPECT_EQ(actions(), "");
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
    ASSERT_EQ(entries().size(), 2);
    answer(writeReply());
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].area, 2);
    acknowledgeAgain();
    EXPECT_EQ(settledLabels(), (std::vector<std::string>{"Main.count", "Main.speed", "Big.same"}));
}

TEST_F(WriteTest, OverlappingPlacesKeepTheirOrder)
{
    connect();
    write("Main.bytes[0]*4", "1,2,3,4");
    write("Main.bytes[3]*2", "5,6");
    logIn();
    ASSERT_EQ(entries().size(), 1);
    answer(writeReply());
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 1);
    EXPECT_EQ(sentEntries[0].address, 303u);
}

TEST_F(WriteTest, NeighboursGoTogether)
{
    connect();
    write("Main.bytes[0]*4", "1,2,3,4");
    write("Main.bytes[4]*2", "5,6");
    logIn();
    EXPECT_EQ(entries().size(), 2);
}

TEST_F(WriteTest, BitsAreNeverInTheDriverTogetherWithOthers)
{
    connect();
    write("Io.start", "1");
    write("Main.speed", "1");
    write("Io.lamp[1]", "0");
    logIn();
    EXPECT_EQ(request(), hex("BB BB 00 00 00 15 3C 00 00 00 00 01 00 00 00 00 00 03 00 00 00 00"
                             "01 00 01 00 00"));
    answer(writeReply());
    EXPECT_EQ(request(), hex("BB BB 00 00 00 16 3C 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02"
                             "00 01 00 01 00 00"));
    acknowledgeAgain();
    EXPECT_EQ(request(), hex("BB BB 00 00 00 15 3C 00 00 00 00 01 00 00 00 00 00 21 00 00 00 00"
                             "00 00 01 00 00"));
    acknowledgeAgain();
    EXPECT_EQ(settledLabels(), (std::vector<std::string>{"Io.start", "Main.speed", "Io.lamp[1]"}));
}

TEST_F(WriteTest, SingleBitsGoTogether)
{
    connect();
    write("Io.start", "1");
    write("Io.lamp[1]", "1");
    logIn();
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 2);
    EXPECT_TRUE(sentEntries[0].isBit);
    EXPECT_TRUE(sentEntries[1].isBit);
    answer(writeReply());
    EXPECT_EQ(writes.size(), 2u);
}

TEST_F(WriteTest, ArrayOfBitsIsOneWrite)
{
    connectAndLogInFor("Io.lamp[0]*20", "1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0");
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(sentEntries.size(), 20);
    EXPECT_EQ(sentEntries[19].address, 51u);
    answer(writeReply());
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, FailsAtOnceWhileThePlcIsAway)
{
    session().start(now);
    ASSERT_EQ(actions(), "C");
    session().disconnected(QStringLiteral("refused"), now);
    ASSERT_EQ(actions(), "X");
    write("Main.speed", "1");
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "the link is down: refused");

    // Still away while the next attempt is being made.
    passTime(500);
    ASSERT_EQ(actions(), "C");
    write("Main.speed", "2");
    EXPECT_EQ(writes.size(), 2u);

    session().connected(now);
    EXPECT_EQ(actions(), "") << "a write was kept";
    write("Main.speed", "3");
    logIn();
    EXPECT_EQ(entries()[0].data, hex("00 03"));
}

TEST_F(WriteTest, WaitingForTheFirstConnectionFailsWithIt)
{
    write("Main.speed", "1");
    session().start(now);
    ASSERT_EQ(actions(), "C");
    session().disconnected(QStringLiteral("no route to host"), now);
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "no route to host");
}

TEST_F(WriteTest, ThatWasSentAndNotAnsweredIsLostAndNeverSentAgain)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    logIn();
    ASSERT_EQ(entries().size(), 1);
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::LinkLost);
    EXPECT_EQ(writes[0].outcome.reason, "no reply within 1000 ms");
    EXPECT_EQ(writes[1].outcome.kind, TransferOutcome::NotSent);
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    EXPECT_EQ(actions(), "");
}

TEST_F(WriteTest, ThatWaitedForTheLoginIsNotSentWhenItIsRefused)
{
    connect();
    write("Main.speed", "1");
    ASSERT_EQ(actions(), "S");
    answer(loginRefusal());
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::NotSent);
    EXPECT_EQ(writes[0].outcome.reason, "the PLC refused the login");
    ASSERT_EQ(actions(), "X");
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    EXPECT_EQ(actions(), "");
}

TEST_F(WriteTest, HundredsInTheDriverAreAllGivenUpWithTheLink)
{
    cycle({"Main.speed"});
    connect();
    for (int i = 0; i < 600; ++i)
        write(("Big.block[" + std::to_string(i) + "]").c_str(), "1");
    readOnce("Main.count");
    logIn();
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    EXPECT_EQ(writes.size(), 600u);
    EXPECT_EQ(reads.size(), 1u);
    ASSERT_EQ(actions(), "X");
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    logIn();
    const RequestContent content = parseRequest(request());
    EXPECT_EQ(content.service, Service::Read);
    EXPECT_EQ(content.entries[0].address, 4u);
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
    EXPECT_EQ(writes.size(), 1800u);
    for (const Settled& write : writes)
        ASSERT_TRUE(write.outcome.isDone());
    // 71 entries of 4 bytes fit into a request (71 x 14 = 994), and the rounds follow each other
    // without a gap.
    EXPECT_EQ(requests, 26);
}

TEST_F(WriteTest, ReadsGetTheirTurnBesideWritesWithoutEnd)
{
    connectAndLogInFor("Main.count", "0");
    readOnce("Main.speed");
    int writeRequests = 0;
    for (int i = 0; i < 100 && reads.empty(); ++i) {
        // Another write waits whenever one goes out.
        write("Main.count", "1");
        const RequestContent content = parseRequest(request());
        if (content.service == Service::Write) {
            ++writeRequests;
            answer(writeReply());
        } else {
            answer(readReply({QByteArray(int(content.entries[0].length), '\5')}));
        }
    }
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ(hex("05 05"), reads[0].bytes);
    // Five in a row, and what the driver has already: one, since all go to the same place.
    EXPECT_GE(6, writeRequests);
    EXPECT_LE(5, writeRequests);
}

TEST_F(WriteTest, OfMorePiecesThanTheDriverQueuesIsNotBegun)
{
    DataPoint target = point("Io.lamp[0]");
    target.elements = 1025;
    runtime->write(target, QVector<values::Value>(1025, values::Value(true)), now,
                   [this](const TransferOutcome& outcome) {
                       writes.push_back({QString(), outcome, QByteArray()});
                   });
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].outcome.reason,
              "it takes 1025 entries and the driver queues 1024 at most; write fewer elements at a "
              "time");
}

TEST_F(WriteTest, ValueShownIsThePlcsUntilItIsReadBack)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 05")}));
    ASSERT_EQ(actions(), "S");
    write("Main.speed", "9");
    answer(readReply({hex("00 05")}));
    ASSERT_EQ(actions(), "S");
    ASSERT_EQ(int(uchar(sent[6])), 0x3C);
    EXPECT_EQ(shown("Main.speed"), "5");
    answer(writeReply());
    EXPECT_EQ(shown("Main.speed"), "5");
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 09")}));
    EXPECT_EQ(shown("Main.speed"), "9");
}

TEST_F(WriteTest, QueuedFromTheOutcomeOfAnotherFollowsAtOnce)
{
    connect();
    runtime->write(point("Main.speed"), {values::Value(qint64(1))}, now,
                   [this](const TransferOutcome&) { write("Main.count", "2"); });
    logIn();
    ASSERT_EQ(entries().size(), 1);
    answer(writeReply());
    EXPECT_EQ(entries()[0].address, 6u);
    acknowledgeAgain();
    EXPECT_EQ(writes.size(), 1u);
    EXPECT_EQ(actions(), "");
}

TEST_F(WriteTest, StoppingSettlesEverything)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    logIn();
    ASSERT_EQ(actions(), "S");
    session().stop();
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::LinkLost);
    EXPECT_EQ(writes[1].outcome.kind, TransferOutcome::NotSent);
}

/// Calls with a reply until the driver gives the request up, whatever the PLC has answered; 0:
/// never.
int repliesUntilGivenUp = 0;

RW_VAR* judge(QByteArray* reply, int received)
{
    if (received == 0 || --repliesUntilGivenUp != 0)
        return builtDriver().dataCom(reply, received);
    QByteArray nothing;
    RW_VAR* outcome = builtDriver().dataCom(&nothing, 0);
    while (outcome->result == 0)
        outcome = builtDriver().dataCom(&nothing, 0);
    return outcome;
}

class AbandonedLogin : public HostTest {
protected:
    AbandonedLogin()
    {
        driver.dataCom = &judge;
        runtime.reset();
        runtime = std::make_unique<Runtime>(driver, settings(), project, this);
    }

    DriverFunctions driver = builtDriver();
};

TEST_F(AbandonedLogin, SettlesEveryWriteThatWaitedBehindItOnce)
{
    session().start(now);
    session().connected(now);
    actions();
    write("Main.speed", "1");
    write("Main.count", "2");
    ASSERT_EQ(int(uchar(request()[6])), 0x01);
    repliesUntilGivenUp = 2; // the first one records the size
    answer(identificationReply());
    ASSERT_EQ(writes.size(), 2u);
    for (const Settled& settled : writes)
        EXPECT_FALSE(settled.outcome.isDone());
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(linkEvents.back().reason, "the login failed: result 71");
    // Nothing of them is carried out later.
    passTime(linkEvents.back().retryDelay);
    EXPECT_EQ(actions(), "C");
    session().connected(now);
    EXPECT_EQ(actions(), "");
    EXPECT_EQ(writes.size(), 2u);
}

} // namespace
} // namespace test
} // namespace plc::host
