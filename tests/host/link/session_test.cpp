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
        ASSERT_EQ(hex(kReadSpeed), request());
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
    EXPECT_EQ("", actions());
    EXPECT_EQ(-1, session().nextDeadline());
    EXPECT_EQ(LinkState::Down, session().linkState());
}

TEST_F(SessionTest, LoginPrecedesTheFirstRead)
{
    connect();
    EXPECT_EQ(hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00"), request());
    answer(identificationReply());
    EXPECT_EQ(hex("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"),
              request());
    answer(fileReply());
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, AcceptedReplyIsStoredAndTheNextRequestFollows)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(hex(kReadSpeed), request());
    EXPECT_EQ("4660", shown("Main.speed"));
    EXPECT_EQ(Answer::Accepted, answers.back().kind);
    EXPECT_EQ(1, answers.back().result);
}

TEST_F(SessionTest, ReplyMayComeInSingleBytes)
{
    connectAndLogIn();
    const QByteArray reply = readReply({hex("12 34")});
    for (int i = 0; i + 1 < reply.size(); ++i) {
        answer(reply.mid(i, 1));
        ASSERT_EQ("", actions()) << "after byte " << i;
    }
    answer(reply.right(1));
    EXPECT_EQ("S", actions());
    EXPECT_EQ("4660", shown("Main.speed"));
}

TEST_F(SessionTest, ReplyMayBeCutInTwoAtAnyByte)
{
    connectAndLogIn();
    for (int cut = 1; cut < readReply({hex("00 00")}).size(); ++cut) {
        const QByteArray reply = readReply({QByteArray("\x01", 1) + char(cut)});
        answer(reply.left(cut));
        ASSERT_EQ("", actions()) << "cut at " << cut;
        answer(reply.mid(cut));
        ASSERT_EQ("S", actions()) << "cut at " << cut;
        ASSERT_EQ(shown("Main.speed"), QString::number(256 + cut));
    }
}

TEST_F(SessionTest, TwoFramesAtOnceGiveNeitherAndEndTheConnection)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}) + readReply({hex("55 55")}));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("unread", shown("Main.speed")) << "nobody knows which of them is the reply";
    EXPECT_EQ(LinkState::Down, lastLinkEvent().state);
    EXPECT_EQ("the PLC sent 15 bytes behind its reply", lastLinkEvent().reason);
    reconnect(500);
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, HalfAFrameBehindTheReplyEndsTheConnectionToo)
{
    connectAndLogIn();
    answer(readReply({hex("12 34")}) + hex("BB BB 00"));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("unread", shown("Main.speed"));
}

TEST_F(SessionTest, BytesThatNobodyAskedForEndTheConnection)
{
    runtime->readCyclically({}, now);
    connect();
    EXPECT_EQ("", actions());
    answer(hex("BB BB"));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the PLC sent 2 bytes that nobody asked for", lastLinkEvent().reason);
}

TEST_F(SessionTest, ReplyThatIsNoFrameEndsTheConnectionAtItsFirstWrongByte)
{
    connectAndLogIn();
    answer(hex("BB"));
    EXPECT_EQ("", actions());
    answer(hex("BA 00"));
    EXPECT_EQ("X", actions());
    EXPECT_EQ(
        "what answers does not speak the block protocol: its reply begins with BB BA 00, "
        "not with BB BB",
        lastLinkEvent().reason);
    EXPECT_EQ("unread", shown("Main.speed"));
}

TEST_F(SessionTest, ReplyOfAnotherSizeNeverReachesTheDriver)
{
    connectAndLogIn();
    answer(readReply({hex("12 34 56 78")}));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("unread", shown("Main.speed"));
    EXPECT_EQ(Answer::Misfit, answers.back().kind);
    EXPECT_EQ("a reply of 17 bytes answers a read whose data take 15", lastLinkEvent().reason);
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
        ASSERT_EQ(0x3C, int(uchar(request()[6])));
    }
    void expectLinkLost()
    {
        EXPECT_EQ(Answer::Misfit, answers.back().kind);
        EXPECT_EQ("X", actions());
        ASSERT_EQ(1u, writes.size());
        EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
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
    EXPECT_EQ("the PLC sent its reply to a login or a read twice", lastLinkEvent().reason);
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
    ASSERT_EQ(1u, writes.size()) << "no reply of this size came before";
    EXPECT_EQ(TransferOutcome::Done, writes[0].outcome.kind);
    ASSERT_EQ("S", actions());
    write("Main.count", "2");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    // The copy comes in place of the reply; the PLC refuses the write, and its refusal comes next.
    answer(writeReply());
    EXPECT_EQ(1u, writes.size());
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(refusal());
    EXPECT_EQ("X", actions());
    EXPECT_EQ("a refusal may be that of the write before this read", lastLinkEvent().reason);
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[1].outcome.kind);
}

TEST_F(AcknowledgementTest, BytesBehindItMakeItDoubtful)
{
    sendWriteBehindARead();
    answer(writeReply() + refusal());
    expectLinkLost();
    EXPECT_EQ("the PLC sent 8 bytes behind its reply", lastLinkEvent().reason);
}

TEST_F(AcknowledgementTest, NothingElseIsWrittenWhileOneIsDoubted)
{
    sendWriteBehindARead();
    answer(writeReply());
    ASSERT_EQ("S", actions());
    write("Main.count", "2");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ("S", actions());
    write("Main.word", "16#0003");
    readOnce("Main.long");
    answer(writeReply());
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(2u, writes.size());
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
}

TEST_F(SessionTest, PlcThatAnswersBothLoginFramesAlikeIsTakenTheSecondTime)
{
    cycle({"Main.speed"});
    connect();
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ("the PLC sent its first reply to the login twice", lastLinkEvent().reason);
    ASSERT_EQ("X", actions());
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ(Answer::Accepted, answers.back().kind);
    EXPECT_EQ(0x2E, int(uchar(request()[6])));
}

TEST_F(SessionTest, SecondCopyOfTheFirstLoginReplyIsNotTheSecondReply)
{
    cycle({"Main.speed"});
    connect();
    ASSERT_EQ(0x01, int(uchar(request()[6])));
    answer(identificationReply());
    ASSERT_EQ(0x31, int(uchar(request()[6])));
    answer(identificationReply());
    EXPECT_EQ(Answer::Misfit, answers.back().kind);
    EXPECT_EQ("X", actions());
}

TEST_F(SessionTest, NoReplyInTimeClosesTheConnectionAndReadsAnewAfterALogin)
{
    connectAndLogIn();
    passTime(999);
    EXPECT_EQ("", actions());
    passTime(1);
    EXPECT_EQ("X", actions());
    EXPECT_EQ("no reply within 1000 ms", lastLinkEvent().reason);
    EXPECT_EQ(500, lastLinkEvent().retryDelay);
    reconnect(500);
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, DeadlineCoversTheWholeReply)
{
    connectAndLogIn();
    const QByteArray reply = readReply({hex("12 34")});
    passTime(900);
    answer(reply.left(14));
    passTime(99);
    EXPECT_EQ("", actions());
    passTime(1);
    EXPECT_EQ("X", actions());
    EXPECT_EQ("only 14 bytes of a reply within 1000 ms", lastLinkEvent().reason);
    EXPECT_EQ("unread", shown("Main.speed"));
}

TEST_F(SessionTest, LateReplyNeverAnswersALaterRequest)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ("X", actions());
    answer(readReply({hex("66 66")}));
    passTime(500);
    ASSERT_EQ("C", actions());
    answer(readReply({hex("66 66")}));
    session().connected(now);
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("12 34")}));
    EXPECT_EQ("4660", shown("Main.speed"));
}

TEST_F(SessionTest, LostConnectionIsMadeAnew)
{
    connectAndLogIn();
    session().disconnected(QStringLiteral("the remote host closed the connection"), now);
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the remote host closed the connection", lastLinkEvent().reason);
    reconnect(500);
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, LossIsReportedOnce)
{
    connectAndLogIn();
    passTime(1000);
    const size_t events = linkEvents.size();
    session().disconnected(QStringLiteral("late news"), now);
    session().disconnected(QStringLiteral("late news"), now);
    EXPECT_EQ(linkEvents.size(), events);
    EXPECT_EQ("X", actions());
}

TEST_F(SessionTest, LossBetweenRequestsMakesTheDriverLogInAnew)
{
    runtime->readCyclically({}, now);
    connect();
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("12 34")}));
    ASSERT_EQ(1u, reads.size());
    EXPECT_EQ("", actions());

    // Nothing is under way and nothing is left to read, so that nothing is given up.
    session().disconnected(QStringLiteral("gone"), now);
    ASSERT_EQ("X", actions());
    passTime(500);
    ASSERT_EQ("C", actions());
    session().connected(now);
    EXPECT_EQ("", actions());
    readOnce("Main.speed");
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("00 07")}));
    ASSERT_EQ(2u, reads.size());
    EXPECT_TRUE(reads[1].outcome.isDone());
    EXPECT_EQ(hex("07 00"), reads[1].bytes);
}

TEST_F(SessionTest, FailedConnectionsWaitTwiceAsLongEachTimeUpToTheLimit)
{
    session().start(now);
    for (int delay : {500, 1000, 2000, 4000, 4000, 4000}) {
        ASSERT_EQ("C", actions());
        session().disconnected(QStringLiteral("refused"), now);
        ASSERT_EQ("X", actions());
        EXPECT_EQ(lastLinkEvent().retryDelay, delay);
        EXPECT_EQ(session().nextDeadline(), now + delay);
        passTime(delay - 1);
        ASSERT_EQ("", actions());
        passTime(1);
    }
}

TEST_F(SessionTest, ConnectionThatIsNotMadeInTimeIsGivenUp)
{
    session().start(now);
    ASSERT_EQ("C", actions());
    passTime(2999);
    EXPECT_EQ("", actions());
    passTime(1);
    EXPECT_EQ("X", actions());
    EXPECT_EQ("no connection within 3000 ms", lastLinkEvent().reason);
    // Too late.
    session().connected(now);
    EXPECT_EQ("", actions());
}

TEST_F(SessionTest, RefusedLoginWaitsLikeALostConnection)
{
    session().start(now);
    for (int delay : {500, 1000, 2000, 4000, 4000}) {
        ASSERT_EQ("C", actions());
        session().connected(now);
        ASSERT_EQ("S", actions());
        answer(loginRefusal());
        ASSERT_EQ("X", actions());
        EXPECT_EQ("the PLC refused the login", lastLinkEvent().reason);
        EXPECT_EQ(201, answers.back().result);
        EXPECT_EQ(lastLinkEvent().retryDelay, delay);
        passTime(delay);
    }
}

TEST_F(SessionTest, RefusedFileRequestIsARefusedLogin)
{
    connect();
    ASSERT_EQ("S", actions());
    answer(identificationReply());
    ASSERT_EQ("S", actions());
    answer(loginRefusal());
    EXPECT_EQ("X", actions());
    EXPECT_EQ(Answer::LoginRefused, answers.back().kind);
    reconnect(500);
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, LoginAloneDoesNotShortenTheWaitingTime)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ(500, lastLinkEvent().retryDelay);
    ASSERT_EQ("X", actions());
    reconnect(500);
    ASSERT_EQ("S", actions());
    passTime(1000);
    EXPECT_EQ(1000, lastLinkEvent().retryDelay);
}

TEST_F(SessionTest, AcceptedReadShortensTheWaitingTime)
{
    connectAndLogIn();
    passTime(1000);
    ASSERT_EQ("X", actions());
    reconnect(500);
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 01")}));
    ASSERT_EQ("S", actions());
    passTime(1000);
    EXPECT_EQ(500, lastLinkEvent().retryDelay);
}

TEST_F(SessionTest, RefusedReadEndsWithItsRefusalAndKeepsTheLogin)
{
    connectAndLogIn();
    answer(readReply({hex("00 01")}));
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(refusal());
    EXPECT_FALSE(answers.back().isLoginDoubted);
    EXPECT_EQ(Answer::Refused, answers.back().kind);
    EXPECT_EQ(5, answers.back().status);
    EXPECT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("12 34")}));
    EXPECT_EQ("4660", shown("Main.speed"));
}

TEST_F(SessionTest, RefusedWriteIsSentAgainAsOftenAsTheSettingSays)
{
    connectAndLogIn();
    write("Main.count", "1");
    answer(readReply({hex("00 01")}));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(0x3C, int(uchar(request()[6])));
        answer(refusal());
        EXPECT_EQ(Answer::Retried, answers.back().kind);
    }
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    answer(refusal());
    EXPECT_EQ(Answer::Abandoned, answers.back().kind);
    EXPECT_EQ(12, answers.back().result);
    // The driver logs in anew, on the connection as it is.
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, ReplyToARetryOfAnotherSizeLeavesTheStreamWhole)
{
    connectAndLogIn();
    write("Main.count", "1");
    answer(readReply({hex("00 01")}));
    ASSERT_EQ("S", actions());
    answer(refusal());
    ASSERT_EQ("S", actions());
    // The driver now expects 8 bytes, as many as the refusal had, and turns these 9 down.
    answer(hex("BB BB 00 00 00 03 00 00 00"));
    EXPECT_EQ(Answer::Retried, answers.back().kind);
    ASSERT_EQ(0x3C, int(uchar(request()[6])));
    answer(refusal());
    EXPECT_EQ(Answer::Abandoned, answers.back().kind);
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("12 34")}));
    EXPECT_EQ("4660", shown("Main.speed"));
}

TEST_F(SessionTest, ReadThatIsRefusedBeforeAnyWasGivenIsFollowedByAnotherLogin)
{
    connectAndLogIn();
    answer(refusal());
    EXPECT_EQ(Answer::Refused, answers.back().kind);
    EXPECT_TRUE(answers.back().isLoginDoubted);
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
    // The new login is believed.
    answer(refusal());
    EXPECT_FALSE(answers.back().isLoginDoubted);
    EXPECT_EQ(hex(kReadSpeed), request());
    EXPECT_EQ(LinkState::Up, session().linkState());
}

TEST_F(SessionTest, PlcThatRefusesEverythingIsAskedNowAndThen)
{
    connectAndLogIn();
    answer(refusal());
    logIn();
    ASSERT_EQ(hex(kReadSpeed), request());
    for (int i = 0; i < 2; ++i) {
        answer(refusal());
        ASSERT_EQ(hex(kReadSpeed), request());
    }
    answer(refusal());
    EXPECT_EQ(std::vector<std::string>{"Main.speed"}, refusedValues);
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ("", actions());
        passTime(9999);
        ASSERT_EQ("", actions());
        passTime(1);
        ASSERT_EQ(hex(kReadSpeed), request());
        answer(refusal());
    }
    EXPECT_EQ(1u, refusedValues.size()) << "told once";
    passTime(10000);
    ASSERT_EQ(hex(kReadSpeed), request());
    answer(readReply({hex("12 34")}));
    EXPECT_EQ(std::vector<std::string>{"Main.speed"}, valuesGivenAgain);
    EXPECT_EQ("4660", shown("Main.speed"));
    EXPECT_EQ(hex(kReadSpeed), request()) << "read at full rate again";
}

TEST_F(SessionTest, ReplyThatIsLookedAtTooLateIsNone)
{
    connectAndLogIn();
    // The process was stopped: the reply is there, the deadline is over, and no timer came first.
    now += 6000;
    answer(readReply({hex("12 34")}));
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the reply came later than within 1000 ms", lastLinkEvent().reason);
    EXPECT_EQ("unread", shown("Main.speed"));
}

TEST_F(SessionTest, ValueIsAsOldAsItsRequest)
{
    connectAndLogIn();
    now += 900;
    answer(readReply({hex("12 34")}));
    EXPECT_EQ("4660", shown("Main.speed"));
    EXPECT_EQ(900, runtime->values().age(0, now));
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
    EXPECT_EQ("X", actions());
    EXPECT_EQ("the PLC sent its reply to a login twice", lastLinkEvent().reason);
    EXPECT_EQ("unread", shown("Main.table[0,1]*12"));
}

TEST_F(SessionTest, LoginThatIsAnsweredAlikeIsDoubtedEachTimeAfterOneThatWasNot)
{
    connect();
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    ASSERT_EQ("X", actions());
    // This PLC answers the frames differently after all.
    reconnect(500);
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    passTime(1000);
    ASSERT_EQ("C", actions());
    session().connected(now);
    request();
    answer(identificationReply());
    request();
    answer(identificationReply());
    EXPECT_EQ("the PLC sent its first reply to the login twice", lastLinkEvent().reason);
    EXPECT_EQ("X", actions());
}

TEST_F(SessionTest, FailuresDoNotAddUp)
{
    connectAndLogIn();
    for (int i = 0; i < 100; ++i) {
        // One refused write among others is retried once, and is never the one too many.
        write("Main.count", "1");
        answer(readReply({hex("00 01")}));
        ASSERT_EQ("S", actions());
        ASSERT_EQ(0x3C, int(uchar(sent[6])));
        answer(refusal());
        ASSERT_EQ(Answer::Retried, answers.back().kind) << i;
        ASSERT_EQ("S", actions());
        answer(writeReply());
        ASSERT_EQ(Answer::Accepted, answers.back().kind);
        ASSERT_EQ("S", actions());
    }
    answer(readReply({hex("00 01")}));
    EXPECT_EQ(100u, writes.size());
}

TEST_F(SessionTest, StopClosesAndStaysClosed)
{
    connectAndLogIn();
    session().stop();
    EXPECT_EQ("X", actions());
    EXPECT_EQ(LinkState::Down, lastLinkEvent().state);
    EXPECT_EQ(-1, lastLinkEvent().retryDelay);
    passTime(1000000);
    answer(readReply({hex("12 34")}));
    session().disconnected(QStringLiteral("late"), now);
    session().wake(now);
    EXPECT_EQ("", actions());
    EXPECT_EQ(-1, session().nextDeadline());
}

TEST_F(SessionTest, SessionCanBeStartedAgainAfterAStop)
{
    connectAndLogIn();
    session().stop();
    ASSERT_EQ("X", actions());
    connect();
    logIn();
    EXPECT_EQ(hex(kReadSpeed), request());
}

TEST_F(SessionTest, WaitsForNothingWhileThereIsNothingToSend)
{
    runtime->readCyclically({}, now);
    connect();
    EXPECT_EQ("", actions());
    EXPECT_EQ(-1, session().nextDeadline());
    EXPECT_EQ(LinkState::Up, session().linkState());
}

TEST_F(SessionTest, PassesFollowEachOtherAtOnceWithoutACycleTime)
{
    cycle({"Main.speed", "Big.same"});
    connect();
    logIn();
    for (int i = 1; i <= 3; ++i) {
        ASSERT_EQ("S", actions());
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
    ASSERT_EQ("S", actions());
    passTime(30);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ("", actions());
    passTime(69);
    EXPECT_EQ("", actions());
    passTime(1);
    EXPECT_EQ("S", actions());
}

TEST_F(CycleTimeTest, PassThatTakesLongerIsFollowedAtOnce)
{
    connect();
    logIn();
    ASSERT_EQ("S", actions());
    passTime(130);
    answer(readReply({hex("00 01")}));
    EXPECT_EQ("S", actions());
}

TEST_F(CycleTimeTest, WritesAndOneShotReadsDoNotWaitForThePass)
{
    connect();
    logIn();
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 01")}));
    ASSERT_EQ("", actions());
    passTime(10);
    write("Main.count", "7");
    ASSERT_EQ("S", actions());
    EXPECT_EQ(0x3C, int(uchar(sent[6])));
    answer(writeReply());
    EXPECT_EQ("", actions());
    readOnce("Main.count");
    ASSERT_EQ("S", actions());
    answer(readReply({hex("00 07")}));
    EXPECT_EQ("", actions());
    passTime(90);
    EXPECT_EQ(hex(kReadSpeed), request());
}

} // namespace
} // namespace test
} // namespace plc::host
