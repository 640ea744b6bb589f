#include "tests/host/link/session_fixture.h"

namespace plc::host {
namespace test {
namespace {

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

} // namespace
} // namespace test
} // namespace plc::host
