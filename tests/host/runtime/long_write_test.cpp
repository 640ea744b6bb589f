#include "tests/host/runtime/write_fixture.h"

namespace plc::host {
namespace test {
namespace {

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
    EXPECT_EQ(hex("00 00 00 FA"), writtenBytes(sent, piece[0]).right(4)); // element 250
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
    EXPECT_EQ((std::vector<std::string>{"Main.speed", "Big.block[0]*300", "Main.count"}),
              settledLabels());
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

TEST_F(WriteTest, OfMorePiecesThanTheDriverQueuesIsNotBegun)
{
    runtime.reset();
    project.scopes[0].variables[1].dimensions[0].upper = 1024;
    runtime = std::make_unique<Runtime>(takenDriver(), settings(), project, this);
    const DataPoint target = point("Io.lamp[0]*1025");
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

} // namespace
} // namespace test
} // namespace plc::host
