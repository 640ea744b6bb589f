#include "tests/host/link/session_fixture.h"

namespace plc::host {
namespace test {
namespace {

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
    for (quint64 i = 1; i <= 3; ++i) {
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
