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
    EXPECT_EQ(hex("BB BB 00 00 00 16 3C 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02"
                  "FF FE 00 01 00 00"),
              request());
    EXPECT_TRUE(writes.empty());
    answer(writeReply());
    ASSERT_EQ(1u, writes.size());
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
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("the project is read-only, by its setting readOnly or by --read-only",
              writes[0].outcome.reason);
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(Service::Read, parseRequest(request()).service) << "reads go on";
    runtime.reset();
}

TEST_F(WriteTest, QueuedBeforeTheFirstConnectionWaitsForIt)
{
    write("Main.speed", "1");
    EXPECT_TRUE(writes.empty());
    connect();
    logIn();
    ASSERT_EQ(1, entries().size());
    answer(writeReply());
    ASSERT_EQ(1u, writes.size());
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
    ASSERT_EQ(3, sentEntries.size());
    EXPECT_EQ(hex("40 60 00 00"), sentEntries[2].data);
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
    ASSERT_EQ(2, entries().size());
    for (int i = 0; i < 2; ++i) {
        answer(refusal());
        ASSERT_TRUE(writes.empty());
        ASSERT_EQ(2, entries().size());
    }
    answer(refusal());
    // It looks like the refusals before it, and like copies of them, until the login is answered.
    EXPECT_TRUE(writes.empty());
    request();
    answer(identificationReply());
    ASSERT_EQ(settledLabels(), (std::vector<std::string>{"Main.speed", "Main.count"}));
    for (const Settled& write : writes) {
        EXPECT_EQ(TransferOutcome::Refused, write.outcome.kind);
        // 10 for a reply that is no good answer, and 2 for a write.
        EXPECT_EQ(12, write.outcome.result);
        EXPECT_EQ(5, write.outcome.status);
        EXPECT_EQ(0, write.outcome.taken);
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
    ASSERT_EQ("S", actions());
    answer(refusal());
    ASSERT_EQ("S", actions());
    acknowledgeAgain();
    ASSERT_EQ(1u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, LongOneGoesInPiecesAndIsSettledByTheLast)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    QVector<FrameEntry> piece = entries();
    ASSERT_EQ(1, piece.size());
    EXPECT_EQ(1000u, piece[0].address);
    EXPECT_EQ(1000u, piece[0].length);
    EXPECT_EQ(hex("00 00 00 FA"), piece[0].data.right(4)); // element 250
    answer(writeReply());
    EXPECT_TRUE(writes.empty());
    piece = entries();
    ASSERT_EQ(1, piece.size());
    EXPECT_EQ(2000u, piece[0].address);
    answer(writeReply());
    EXPECT_TRUE(writes.empty());
    piece = entries();
    ASSERT_EQ(1, piece.size());
    EXPECT_EQ(3000u, piece[0].address);
    EXPECT_EQ(400u, piece[0].length);
    acknowledgeAgain();
    ASSERT_EQ(1u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
    EXPECT_EQ("", actions());
}

TEST_F(WriteTest, LongOneThatFailsIsNotContinued)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    ASSERT_EQ("S", actions());
    answer(writeReply());
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ("S", actions());
        answer(refusal());
    }
    logIn();
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::Refused, writes[0].outcome.kind);
    EXPECT_EQ(250, writes[0].outcome.taken) << "1000 bytes of DINTs";
    answerWithZeros(); // to the read that would have shown what the login has
    EXPECT_EQ("", actions()) << "the third piece was sent";
}

TEST_F(WriteTest, LongOneThatIsLostTellsWhatWasTakenBefore)
{
    QByteArray numbers = "1";
    for (int i = 2; i <= 600; ++i)
        numbers += ',' + QByteArray::number(i);
    connectAndLogInFor("Big.block[0]*600", numbers.constData());
    ASSERT_EQ("S", actions());
    answer(writeReply());
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    EXPECT_EQ(250, writes[0].outcome.taken);
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
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(4u, sentEntries[0].address);
    answer(writeReply());
    sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(1000u, sentEntries[0].length);
    answer(writeReply());
    sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(200u, sentEntries[0].length);
    acknowledgeAgain();
    sentEntries = entries();
    ASSERT_EQ(1, sentEntries.size());
    EXPECT_EQ(6u, sentEntries[0].address);
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
        ASSERT_EQ(1, sentEntries.size()) << value;
        EXPECT_EQ(sentEntries[0].data, QByteArray("\0", 1) + char(value));
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
    EXPECT_EQ(settledLabels(), (std::vector<std::string>{"Main.count", "Main.speed", "Big.same"}));
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
    EXPECT_EQ(settledLabels(), (std::vector<std::string>{"Io.start", "Main.speed", "Io.lamp[1]"}));
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

TEST_F(WriteTest, ArrayOfBitsIsOneWrite)
{
    connectAndLogInFor("Io.lamp[0]*20", "1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0,1,0");
    const QVector<FrameEntry> sentEntries = entries();
    ASSERT_EQ(20, sentEntries.size());
    EXPECT_EQ(51u, sentEntries[19].address);
    answer(writeReply());
    ASSERT_EQ(1u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
}

TEST_F(WriteTest, FailsAtOnceWhileThePlcIsAway)
{
    session().start(now);
    ASSERT_EQ("C", actions());
    session().disconnected(QStringLiteral("refused"), now);
    ASSERT_EQ("X", actions());
    write("Main.speed", "1");
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("the link is down: refused", writes[0].outcome.reason);

    // Still away while the next attempt is being made.
    passTime(500);
    ASSERT_EQ("C", actions());
    write("Main.speed", "2");
    EXPECT_EQ(2u, writes.size());

    session().connected(now);
    EXPECT_EQ("", actions()) << "a write was kept";
    write("Main.speed", "3");
    logIn();
    EXPECT_EQ(hex("00 03"), entries()[0].data);
}

TEST_F(WriteTest, WaitingForTheFirstConnectionFailsWithIt)
{
    write("Main.speed", "1");
    session().start(now);
    ASSERT_EQ("C", actions());
    session().disconnected(QStringLiteral("no route to host"), now);
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("no route to host", writes[0].outcome.reason);
}

TEST_F(WriteTest, ThatWasSentAndNotAnsweredIsLostAndNeverSentAgain)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    logIn();
    ASSERT_EQ(1, entries().size());
    passTime(1000);
    ASSERT_EQ("X", actions());
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    EXPECT_EQ("no reply within 1000 ms", writes[0].outcome.reason);
    EXPECT_EQ(TransferOutcome::NotSent, writes[1].outcome.kind);
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    EXPECT_EQ("", actions());
}

TEST_F(WriteTest, ThatWaitedForTheLoginIsNotSentWhenItIsRefused)
{
    connect();
    write("Main.speed", "1");
    ASSERT_EQ("S", actions());
    answer(loginRefusal());
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::NotSent, writes[0].outcome.kind);
    EXPECT_EQ("the PLC refused the login", writes[0].outcome.reason);
    ASSERT_EQ("X", actions());
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    EXPECT_EQ("", actions());
}

TEST_F(WriteTest, HundredsInTheDriverAreAllGivenUpWithTheLink)
{
    cycle({"Main.speed"});
    connect();
    for (int i = 0; i < 600; ++i)
        write(("Big.block[" + std::to_string(i) + "]").c_str(), "1");
    readOnce("Main.count");
    logIn();
    ASSERT_EQ("S", actions());
    passTime(1000);
    EXPECT_EQ(600u, writes.size());
    EXPECT_EQ(1u, reads.size());
    ASSERT_EQ("X", actions());
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    logIn();
    const RequestContent content = parseRequest(request());
    EXPECT_EQ(Service::Read, content.service);
    EXPECT_EQ(4u, content.entries[0].address);
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
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(
        "it takes 1025 entries and the driver queues 1024 at most; write fewer elements at a "
        "time",
        writes[0].outcome.reason);
}

TEST_F(WriteTest, ValueShownIsThePlcsUntilItIsReadBack)
{
    cycle({"Main.speed"});
    connect();
    logIn();
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 05")}));
    ASSERT_EQ("S", actions());
    write("Main.speed", "9");
    answer(readReply({hex("00 05")}));
    ASSERT_EQ("S", actions());
    ASSERT_EQ(0x3C, int(uchar(sent[6])));
    EXPECT_EQ("5", shown("Main.speed"));
    answer(writeReply());
    EXPECT_EQ("5", shown("Main.speed"));
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 09")}));
    EXPECT_EQ("9", shown("Main.speed"));
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

TEST_F(WriteTest, StoppingSettlesEverything)
{
    connect();
    write("Main.speed", "1");
    write("Main.speed", "2");
    logIn();
    ASSERT_EQ("S", actions());
    session().stop();
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    EXPECT_EQ(TransferOutcome::NotSent, writes[1].outcome.kind);
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
    ASSERT_EQ(0x01, int(uchar(request()[6])));
    repliesUntilGivenUp = 2; // the first one records the size
    answer(identificationReply());
    ASSERT_EQ(2u, writes.size());
    for (const Settled& settled : writes)
        EXPECT_FALSE(settled.outcome.isDone());
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the login failed: result 71", linkEvents.back().reason);
    // Nothing of them is carried out later.
    passTime(linkEvents.back().retryDelay);
    EXPECT_EQ("C", actions());
    session().connected(now);
    EXPECT_EQ("", actions());
    EXPECT_EQ(2u, writes.size());
}

} // namespace
} // namespace test
} // namespace plc::host
