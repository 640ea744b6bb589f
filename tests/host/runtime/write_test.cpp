#include "host/transfers/result_text.h"
#include "tests/host/runtime/write_fixture.h"

namespace plc::host {
namespace test {
namespace {

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
    runtime = std::make_unique<Runtime>(takenDriver(), readOnly, project, this);
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
    EXPECT_EQ(hex("40 60 00 00"), writtenBytes(sent, sentEntries[2]));
    answer(writeReply());
    EXPECT_EQ((std::vector<std::string>{"Main.speed", "Main.count", "Main.real"}), settledLabels());
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
    ASSERT_EQ((std::vector<std::string>{"Main.speed", "Main.count"}), settledLabels());
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

/// The driver expects replies as long as the first one, the refusal, and turns this one down.
class LongerReplyTest : public WriteTest, public ::testing::WithParamInterface<QByteArray> {};

const QByteArray kLongerReply = hex("BB BB 00 00 00 03 00 00 00");

TEST_P(LongerReplyTest, ToARetryIsNotToldAsARefusal)
{
    connectAndLogInFor("Main.speed", "5");
    for (const QByteArray& reply : {refusal(), kLongerReply, GetParam()}) {
        ASSERT_EQ(1, entries().size());
        answer(reply);
    }
    logIn();
    ASSERT_EQ(1u, writes.size());
    EXPECT_EQ(TransferOutcome::LinkLost, writes[0].outcome.kind);
    EXPECT_EQ(
        "not known: the PLC refused it first and then called it good, in a reply of another size; "
        "the PLC may or may not have carried it out",
        writeOutcomeText(point("Main.speed"), writes[0].outcome));
    // Of the next one it says nothing.
    write("Main.speed", "6");
    answerWithZeros();
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(1, entries().size());
        answer(refusal());
    }
    logIn();
    ASSERT_EQ(2u, writes.size());
    EXPECT_EQ(TransferOutcome::Refused, writes[1].outcome.kind);
}

INSTANTIATE_TEST_SUITE_P(LastReplies, LongerReplyTest, ::testing::Values(kLongerReply, refusal()));

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

} // namespace
} // namespace test
} // namespace plc::host
