#include "tests/host/link/session_fixture.h"

namespace plc::host {
namespace test {
namespace {

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

} // namespace
} // namespace test
} // namespace plc::host
