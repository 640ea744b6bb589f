#include "tests/host/runtime/write_fixture.h"

namespace plc::host {
namespace test {
namespace {

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
    const QByteArray frame = request();
    EXPECT_EQ(hex("00 03"), writtenBytes(frame, parseRequest(frame).entries[0]));
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
        runtime = std::make_unique<Runtime>(*DriverClaim::take(driver), settings(), project, this);
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
