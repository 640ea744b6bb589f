#include "tests/host/link/session_fixture.h"

namespace plc::host {
namespace test {
namespace {

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

} // namespace
} // namespace test
} // namespace plc::host
