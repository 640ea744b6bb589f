#include "tests/host/link/session_fixture.h"

namespace plc::host {
namespace test {
namespace {

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

} // namespace
} // namespace test
} // namespace plc::host
