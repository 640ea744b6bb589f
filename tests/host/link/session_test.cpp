#include "host/link/session.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

const char kReadSpeed[] =
    "BB BB 00 00 00 14 2E 00 00 00 00 01 00 01 00 00 00 04 00 00 00 02 00 01 00 00";

class SessionTest : public HostTest {
protected:
    SessionTest() { cycle({"Main.speed"}); }

    void connectAndLogIn()
    {
        connect();
        logIn();
        ASSERT_EQ(request(), hex(kReadSpeed));
    }
    LinkEvent lastLinkEvent() const
    {
        return linkEvents.empty() ? LinkEvent{LinkState::Up, QString(), 0} : linkEvents.back();
    }
};

TEST_F(SessionTest, NothingHappensBeforeTheStart)
{
    session().tick(now);
    session().wake(now);
    EXPECT_EQ(actions(), "");
    EXPECT_EQ(session().nextDeadline(), -1);
    EXPECT_EQ(session().linkState(), LinkState::Down);
}

TEST_F(SessionTest, LoginPrecedesTheFirstRead)
{
    connect();
    EXPECT_EQ(request(), hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00"));
    answer(identificationReply());
    EXPECT_EQ(request(),
              hex("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"));
    answer(fileReply());
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, AcceptedReplyIsStoredAndTheNextRequestFollows)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(request(), hex(kReadSpeed));
    EXPECT_EQ(shown("Main.speed"), "4660");
    EXPECT_EQ(answers.back().kind, Answer::Accepted);
    EXPECT_EQ(answers.back().result, 1);
}

TEST_F(SessionTest, ReplyMayComeInSingleBytes)
{
    connectAndLogIn();
    const QByteArray reply = readReply({hex("12 34")});
    for (int i = 0; i + 1 < reply.size(); ++i) {
        answer(reply.mid(i, 1));
        ASSERT_EQ(actions(), "") << "after byte " << i;
    }
    answer(reply.right(1));
    EXPECT_EQ(actions(), "S");
    EXPECT_EQ(shown("Main.speed"), "4660");
}

TEST_F(SessionTest, ReplyMayBeCutInTwoAtAnyByte)
{
    connectAndLogIn();
    for (int cut = 1; cut < readReply({hex("00 00")}).size(); ++cut) {
        const QByteArray reply = readReply({QByteArray("\x01", 1) + char(cut)});
        answer(reply.left(cut));
        ASSERT_EQ(actions(), "") << "cut at " << cut;
        answer(reply.mid(cut));
        ASSERT_EQ(actions(), "S") << "cut at " << cut;
        ASSERT_EQ(shown("Main.speed"), QString::number(256 + cut));
    }
}

TEST_F(SessionTest, TwoFramesAtOnceGiveNeitherAndEndTheConnection)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}) + readReply({hex("55 55")}));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(shown("Main.speed"), "unread") << "nobody knows which of them is the reply";
    EXPECT_EQ(lastLinkEvent().state, LinkState::Down);
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent 15 bytes behind its reply");
    reconnect(500);
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, HalfAFrameBehindTheReplyEndsTheConnectionToo)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}) + hex("BB BB 00"));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(shown("Main.speed"), "unread");
}

TEST_F(SessionTest, BytesThatNobodyAskedForEndTheConnection)
{
    runtime->readCyclically({}, now);
    connect();
    EXPECT_EQ(actions(), "");
    answer(hex("BB BB"));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent 2 bytes that nobody asked for");
}

TEST_F(SessionTest, ReplyThatIsNoFrameEndsTheConnectionAtItsFirstWrongByte)
{
    connectAndLogIn();
    answer(hex("BB"));
    EXPECT_EQ(actions(), "");
    answer(hex("BA 00"));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason,
              "what answers does not speak the block protocol: its reply begins with BB BA 00, "
              "not with BB BB");
    EXPECT_EQ(shown("Main.speed"), "unread");
}

TEST_F(SessionTest, ReplyOfAnotherSizeNeverReachesTheDriver)
{
    connectAndLogIn();
    answer(readReply({hex("12 34 56 78")}));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(shown("Main.speed"), "unread");
    EXPECT_EQ(answers.back().kind, Answer::Misfit);
    EXPECT_EQ(lastLinkEvent().reason, "a reply of 17 bytes answers a read whose data take 15");
}

class AcknowledgementTest : public SessionTest {
protected:
    /// A write goes out after the reply to a read, whose value was 1.
    void sendWriteBehindARead()
    {
        cycle({"Main.speed"});
        connect();
        logIn();
        request();
        write("Main.count", "7");
        answer(readReply({hex("00 01")}));
        ASSERT_EQ(int(uchar(request()[6])), 0x3C);
    }
    void expectLinkLost()
    {
        EXPECT_EQ(answers.back().kind, Answer::Misfit);
        EXPECT_EQ(actions(), "X");
        ASSERT_EQ(writes.size(), 1u);
        EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::LinkLost);
    }
};

TEST_F(AcknowledgementTest, SecondCopyOfAReadsReplyDoesNotAcknowledgeAWrite)
{
    sendWriteBehindARead();
    answer(readReply({hex("00 01")}));
    expectLinkLost();
}

TEST_F(AcknowledgementTest, SecondCopyOfALoginReplyDoesNotAcknowledgeAWrite)
{
    sendWriteBehindARead();
    answer(identificationReply());
    expectLinkLost();
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent its reply to a login or a read twice");
}

TEST_F(AcknowledgementTest, AsLongAsTheReplyToAReadIsNotBelievedTheFirstTime)
{
    sendWriteBehindARead();
    answer(readReply({hex("00 02")}));
    expectLinkLost();
    EXPECT_EQ("the PLC's reply to a write is as long as one to a login or a read",
              lastLinkEvent().reason);
    // From now on it is compared with all that the PLC has sent, and no copy of it.
    reconnect(500);
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(hex(kReadSpeed), request());
    write("Main.count", "2");
    answer(readReply({hex("00 03")}));
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    answer(readReply({hex("00 02")}));
    EXPECT_EQ(1u, writes.size());
    // A cyclic read has a reply of the same size, which proves nothing.
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("00 03")}));
    EXPECT_EQ(1u, writes.size());
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(1, entries.size());
    EXPECT_EQ(4u, entries[0].address);
    EXPECT_EQ(1u, entries[0].length);
    answer(readReply({hex("00")}));
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::Done, writes[1].outcome.kind);
}

TEST_F(AcknowledgementTest, CopyOfAnyEarlierReplyToAReadIsNone)
{
    sendWriteBehindARead();
    answer(readReply({hex("00 02")}));
    expectLinkLost();
    reconnect(500);
    for (const char* value : {"00 01", "00 02", "00 03"}) {
        ASSERT_EQ(hex(kReadSpeed), request());
        answer(readReply({hex(value)}));
    }
    ASSERT_EQ(hex(kReadSpeed), request());
    write("Main.count", "2");
    answer(readReply({hex("00 04")}));
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    answer(readReply({hex("00 02")}));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the PLC sent its reply to a login or a read twice", lastLinkEvent().reason);
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[1].outcome.kind);
}

TEST_F(AcknowledgementTest, ReplyThatComesAgainAndAgainIsKeptOnce)
{
    sendWriteBehindARead();
    answer(readReply({hex("00 02")}));
    expectLinkLost();
    reconnect(500);
    // 20,000 times 15 bytes are more than what is kept of replies.
    for (int i = 0; i < 20000; ++i) {
        actions();
        answer(readReply({hex("00 01")}));
    }
    ASSERT_EQ(hex(kReadSpeed), request());
    write("Main.count", "2");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    answer(readReply({hex("00 02")}));
    EXPECT_EQ(Answer::Accepted, answers.back().kind) << lastLinkEvent().reason.toStdString();
}

TEST_F(AcknowledgementTest, CopyOfAnEarlierAcknowledgementIsFoundByTheNextReply)
{
    sendWriteBehindARead();
    answer(writeReply());
    ASSERT_EQ(writes.size(), 1u) << "no reply of this size came before";
    EXPECT_EQ(writes[0].outcome.kind, TransferOutcome::Done);
    ASSERT_EQ(actions(), "S");
    write("Main.count", "2");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(int(uchar(request()[6])), 0x3C);
    // The copy comes in place of the reply; the PLC refuses the write, and its refusal comes next.
    answer(writeReply());
    EXPECT_EQ(writes.size(), 1u);
    ASSERT_EQ(request(), hex(kReadSpeed));
    answer(refusal());
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "a refusal may be that of the write before this read");
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[1].outcome.kind, TransferOutcome::LinkLost);
}

TEST_F(AcknowledgementTest, BytesBehindItMakeItDoubtful)
{
    sendWriteBehindARead();
    answer(writeReply() + refusal());
    expectLinkLost();
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent 8 bytes behind its reply");
}

TEST_F(AcknowledgementTest, NothingElseIsWrittenWhileOneIsDoubted)
{
    sendWriteBehindARead();
    answer(writeReply());
    ASSERT_EQ(actions(), "S");
    write("Main.count", "2");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(actions(), "S");
    write("Main.word", "16#0003");
    readOnce("Main.long");
    answer(writeReply());
    ASSERT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(writes.size(), 2u);
    ASSERT_EQ(int(uchar(request()[6])), 0x3C);
}

TEST_F(SessionTest, PlcThatAnswersBothLoginFramesAlikeIsTakenTheSecondTime)
{
    cycle({"Main.speed"});
    connect();
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent its first reply to the login twice");
    ASSERT_EQ(actions(), "X");
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ(answers.back().kind, Answer::Accepted);
    EXPECT_EQ(int(uchar(request()[6])), 0x2E);
}

TEST_F(SessionTest, SecondCopyOfTheFirstLoginReplyIsNotTheSecondReply)
{
    cycle({"Main.speed"});
    connect();
    ASSERT_EQ(int(uchar(request()[6])), 0x01);
    answer(identificationReply());
    ASSERT_EQ(int(uchar(request()[6])), 0x31);
    answer(identificationReply());
    EXPECT_EQ(answers.back().kind, Answer::Misfit);
    EXPECT_EQ(actions(), "X");
}

TEST_F(SessionTest, NoReplyInTimeClosesTheConnectionAndReadsAnewAfterALogin)
{
    connectAndLogIn();
    passTime(999);
    EXPECT_EQ(actions(), "");
    passTime(1);
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "no reply within 1000 ms");
    EXPECT_EQ(lastLinkEvent().retryDelay, 500);
    reconnect(500);
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, DeadlineCoversTheWholeReply)
{
    connectAndLogIn();
    const QByteArray reply = readReply({hex("12 34")});
    passTime(900);
    answer(reply.left(14));
    passTime(99);
    EXPECT_EQ(actions(), "");
    passTime(1);
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "only 14 bytes of a reply within 1000 ms");
    EXPECT_EQ(shown("Main.speed"), "unread");
}

TEST_F(SessionTest, LateReplyNeverAnswersALaterRequest)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    answer(readReply({hex("66 66")}));
    passTime(500);
    ASSERT_EQ(actions(), "C");
    answer(readReply({hex("66 66")}));
    session().connected(now);
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(shown("Main.speed"), "4660");
}

TEST_F(SessionTest, LostConnectionIsMadeAnew)
{
    connectAndLogIn();
    session().disconnected(QStringLiteral("the remote host closed the connection"), now);
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "the remote host closed the connection");
    reconnect(500);
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, LossIsReportedOnce)
{
    connectAndLogIn();
    passTime(1000);
    const size_t events = linkEvents.size();
    session().disconnected(QStringLiteral("late news"), now);
    session().disconnected(QStringLiteral("late news"), now);
    EXPECT_EQ(linkEvents.size(), events);
    EXPECT_EQ(actions(), "X");
}

TEST_F(SessionTest, LossBetweenRequestsMakesTheDriverLogInAnew)
{
    runtime->readCyclically({}, now);
    connect();
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("12 34")}));
    ASSERT_EQ(reads.size(), 1u);
    EXPECT_EQ(actions(), "");

    // Nothing is under way and nothing is left to read, so that nothing is given up.
    session().disconnected(QStringLiteral("gone"), now);
    ASSERT_EQ(actions(), "X");
    passTime(500);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    EXPECT_EQ(actions(), "");
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("00 07")}));
    ASSERT_EQ(reads.size(), 2u);
    EXPECT_TRUE(reads[1].outcome.isDone());
    EXPECT_EQ(reads[1].bytes, hex("07 00"));
}

TEST_F(SessionTest, FailedConnectionsWaitTwiceAsLongEachTimeUpToTheLimit)
{
    session().start(now);
    for (int delay : {500, 1000, 2000, 4000, 4000, 4000}) {
        ASSERT_EQ(actions(), "C");
        session().disconnected(QStringLiteral("refused"), now);
        ASSERT_EQ(actions(), "X");
        EXPECT_EQ(lastLinkEvent().retryDelay, delay);
        EXPECT_EQ(session().nextDeadline(), now + delay);
        passTime(delay - 1);
        ASSERT_EQ(actions(), "");
        passTime(1);
    }
}

TEST_F(SessionTest, ConnectionThatIsNotMadeInTimeIsGivenUp)
{
    session().start(now);
    ASSERT_EQ(actions(), "C");
    passTime(2999);
    EXPECT_EQ(actions(), "");
    passTime(1);
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "no connection within 3000 ms");
    // Too late.
    session().connected(now);
    EXPECT_EQ(actions(), "");
}

TEST_F(SessionTest, RefusedLoginWaitsLikeALostConnection)
{
    session().start(now);
    for (int delay : {500, 1000, 2000, 4000, 4000}) {
        ASSERT_EQ(actions(), "C");
        session().connected(now);
        ASSERT_EQ(actions(), "S");
        answer(loginRefusal());
        ASSERT_EQ(actions(), "X");
        EXPECT_EQ(lastLinkEvent().reason, "the PLC refused the login");
        EXPECT_EQ(answers.back().result, 201);
        EXPECT_EQ(lastLinkEvent().retryDelay, delay);
        passTime(delay);
    }
}

TEST_F(SessionTest, RefusedFileRequestIsARefusedLogin)
{
    connect();
    ASSERT_EQ(actions(), "S");
    answer(identificationReply());
    ASSERT_EQ(actions(), "S");
    answer(loginRefusal());
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(answers.back().kind, Answer::LoginRefused);
    reconnect(500);
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, LoginAloneDoesNotShortenTheWaitingTime)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ(lastLinkEvent().retryDelay, 500);
    ASSERT_EQ(actions(), "X");
    reconnect(500);
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    EXPECT_EQ(lastLinkEvent().retryDelay, 1000);
}

TEST_F(SessionTest, AcceptedReadShortensTheWaitingTime)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    reconnect(500);
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    EXPECT_EQ(lastLinkEvent().retryDelay, 500);
}

TEST_F(SessionTest, RefusedReadEndsWithItsRefusalAndKeepsTheLogin)
{
    connectAndLogIn();
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(request(), hex(kReadSpeed));
    answer(refusal());
    EXPECT_FALSE(answers.back().isLoginDoubted);
    EXPECT_EQ(answers.back().kind, Answer::Refused);
    EXPECT_EQ(answers.back().status, 5);
    EXPECT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(shown("Main.speed"), "4660");
}

TEST_F(SessionTest, RefusedWriteIsSentAgainAsOftenAsTheSettingSays)
{
    connectAndLogIn();
    write("Main.count", "1");
    answer(readReply({hex("00 01")}));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(int(uchar(request()[6])), 0x3C);
        answer(refusal());
        EXPECT_EQ(answers.back().kind, Answer::Retried);
    }
    ASSERT_EQ(int(uchar(request()[6])), 0x3C);
    answer(refusal());
    EXPECT_EQ(answers.back().kind, Answer::Abandoned);
    EXPECT_EQ(answers.back().result, 12);
    // The driver logs in anew, on the connection as it is.
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, ReplyToARetryOfAnotherSizeLeavesTheStreamWhole)
{
    connectAndLogIn();
    write("Main.count", "1");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(actions(), "S");
    answer(refusal());
    ASSERT_EQ(actions(), "S");
    // The driver now expects 8 bytes, as many as the refusal had, and turns these 9 down.
    answer(hex("BB BB 00 00 00 03 00 00 00"));
    EXPECT_EQ(answers.back().kind, Answer::Retried);
    ASSERT_EQ(int(uchar(request()[6])), 0x3C);
    answer(refusal());
    EXPECT_EQ(answers.back().kind, Answer::Abandoned);
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(shown("Main.speed"), "4660");
}

TEST_F(SessionTest, ReadThatIsRefusedBeforeAnyWasGivenIsFollowedByAnotherLogin)
{
    connectAndLogIn();
    answer(refusal());
    EXPECT_EQ(answers.back().kind, Answer::Refused);
    EXPECT_TRUE(answers.back().isLoginDoubted);
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
    // The new login is believed.
    answer(refusal());
    EXPECT_FALSE(answers.back().isLoginDoubted);
    EXPECT_EQ(request(), hex(kReadSpeed));
    EXPECT_EQ(session().linkState(), LinkState::Up);
}

TEST_F(SessionTest, PlcThatRefusesEverythingIsAskedNowAndThen)
{
    connectAndLogIn();
    answer(refusal());
    logIn();
    ASSERT_EQ(request(), hex(kReadSpeed));
    for (int i = 0; i < 2; ++i) {
        answer(refusal());
        ASSERT_EQ(request(), hex(kReadSpeed));
    }
    answer(refusal());
    EXPECT_EQ(refusedValues, std::vector<std::string>{"Main.speed"});
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(actions(), "");
        passTime(9999);
        ASSERT_EQ(actions(), "");
        passTime(1);
        ASSERT_EQ(request(), hex(kReadSpeed));
        answer(refusal());
    }
    EXPECT_EQ(refusedValues.size(), 1u) << "told once";
    passTime(10000);
    ASSERT_EQ(request(), hex(kReadSpeed));
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(valuesGivenAgain, std::vector<std::string>{"Main.speed"});
    EXPECT_EQ(shown("Main.speed"), "4660");
    EXPECT_EQ(request(), hex(kReadSpeed)) << "read at full rate again";
}

TEST_F(SessionTest, ReplyThatIsLookedAtTooLateIsNone)
{
    connectAndLogIn();
    // The process was stopped: the reply is there, the deadline is over, and no timer came first.
    now += 6000;
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "the reply came later than within 1000 ms");
    EXPECT_EQ(shown("Main.speed"), "unread");
}

TEST_F(SessionTest, ValueIsAsOldAsItsRequest)
{
    connectAndLogIn();
    now += 900;
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(shown("Main.speed"), "4660");
    EXPECT_EQ(runtime->values().age(0, now), 900);
}

TEST_F(SessionTest, CopyOfALoginReplyIsNoValue)
{
    // 24 bytes of data make a reply of 37 bytes, as long as this reply to the file request.
    cycle({"Main.table[0,1]*12"});
    connect();
    request();
    answer(identificationReply());
    request();
    const QByteArray login = frameOf(QByteArray(6, '\0') + QByteArray(25, '\x12'));
    answer(login);
    const QVector<FrameEntry> entries = parseRequest(request()).entries;
    ASSERT_EQ(login.size(), readReplySize(entries));
    answer(login);
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent its reply to a login twice");
    EXPECT_EQ(shown("Main.table[0,1]*12"), "unread");
}

TEST_F(SessionTest, LoginThatIsAnsweredAlikeIsDoubtedEachTimeAfterOneThatWasNot)
{
    connect();
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    ASSERT_EQ(actions(), "X");
    // This PLC answers the frames differently after all.
    reconnect(500);
    ASSERT_EQ(actions(), "S");
    passTime(1000);
    ASSERT_EQ(actions(), "X");
    passTime(1000);
    ASSERT_EQ(actions(), "C");
    session().connected(now);
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ(lastLinkEvent().reason, "the PLC sent its first reply to the login twice");
    EXPECT_EQ(actions(), "X");
}

TEST_F(SessionTest, FailuresDoNotAddUp)
{
    connectAndLogIn();
    for (int i = 0; i < 100; ++i) {
        // One refused write among others is retried once, and is never the one too many.
        write("Main.count", "1");
        answer(readReply({hex("00 01")}));
        ASSERT_EQ(actions(), "S");
        ASSERT_EQ(int(uchar(sent[6])), 0x3C);
        answer(refusal());
        ASSERT_EQ(answers.back().kind, Answer::Retried) << i;
        ASSERT_EQ(actions(), "S");
        answer(writeReply());
        ASSERT_EQ(answers.back().kind, Answer::Accepted);
        ASSERT_EQ(actions(), "S");
    }
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(writes.size(), 100u);
}

TEST_F(SessionTest, StopClosesAndStaysClosed)
{
    connectAndLogIn();
    session().stop();
    EXPECT_EQ(actions(), "X");
    EXPECT_EQ(lastLinkEvent().state, LinkState::Down);
    EXPECT_EQ(lastLinkEvent().retryDelay, -1);
    passTime(1000000);
    answer(readReply({hex("12 34")}));
    session().disconnected(QStringLiteral("late"), now);
    session().wake(now);
    EXPECT_EQ(actions(), "");
    EXPECT_EQ(session().nextDeadline(), -1);
}

TEST_F(SessionTest, SessionCanBeStartedAgainAfterAStop)
{
    connectAndLogIn();
    session().stop();
    ASSERT_EQ(actions(), "X");
    connect();
    logIn();
    EXPECT_EQ(request(), hex(kReadSpeed));
}

TEST_F(SessionTest, WaitsForNothingWhileThereIsNothingToSend)
{
    runtime->readCyclically({}, now);
    connect();
    EXPECT_EQ(actions(), "");
    EXPECT_EQ(session().nextDeadline(), -1);
    EXPECT_EQ(session().linkState(), LinkState::Up);
}

TEST_F(SessionTest, PassesFollowEachOtherAtOnceWithoutACycleTime)
{
    cycle({"Main.speed", "Big.same"});
    connect();
    logIn();
    for (int i = 1; i <= 3; ++i) {
        ASSERT_EQ(actions(), "S");
        answer(readReply({hex("00 01"), hex("00 02")}));
        EXPECT_EQ(session().passes(), i);
    }
}

class CycleTimeTest : public HostTest {
protected:
    CycleTimeTest() : HostTest(100) { cycle({"Main.speed"}); }
};

TEST_F(CycleTimeTest, NextPassWaitsFromTheStartOfTheLastOne)
{
    connect();
    logIn();
    ASSERT_EQ(actions(), "S");
    passTime(30);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(actions(), "");
    passTime(69);
    EXPECT_EQ(actions(), "");
    passTime(1);
    EXPECT_EQ(actions(), "S");
}

TEST_F(CycleTimeTest, PassThatTakesLongerIsFollowedAtOnce)
{
    connect();
    logIn();
    ASSERT_EQ(actions(), "S");
    passTime(130);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(actions(), "S");
}

TEST_F(CycleTimeTest, WritesAndOneShotReadsDoNotWaitForThePass)
{
    connect();
    logIn();
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(actions(), "");
    passTime(10);
    write("Main.count", "7");
    ASSERT_EQ(actions(), "S");
    EXPECT_EQ(int(uchar(sent[6])), 0x3C);
    answer(writeReply());
    EXPECT_EQ(actions(), "");
    readOnce("Main.count");
    ASSERT_EQ(actions(), "S");
    answer(readReply({hex("00 07")}));
    EXPECT_EQ(actions(), "");
    passTime(90);
    EXPECT_EQ(request(), hex(kReadSpeed));
}

} // namespace
} // namespace test
} // namespace plc::host
