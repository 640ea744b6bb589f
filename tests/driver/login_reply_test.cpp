#include "tests/driver/reply_processing_fixture.h"

namespace plc::test {
namespace {

TEST_F(ReplyProcessing, LoginTakesTwoRepliesOfTwoCallsEach)
{
    addReads(1);
    issue();
    EXPECT_EQ(1, once(identificationReply()));
    EXPECT_EQ(206, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, settings.frameIndex);
    EXPECT_EQ(1, once(identificationReply()));
    EXPECT_EQ(1, settings.frameIndex);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(23, issue().frameLength);
    EXPECT_EQ(1, once(fileReply(0x34, 0x12)));
    EXPECT_EQ(36, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(1, once(fileReply(0x34, 0x12)));
    EXPECT_EQ(2, settings.frameIndex);
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(0x12, PLC_driver.plcInfo1);
    EXPECT_EQ(0x34, PLC_driver.plcInfo2);
}

TEST_F(ReplyProcessing, LoginSettlesNoListAndCallsNobody)
{
    addReads(2);
    PLC_driver.writeList.append(tagged(0, 1, 1));
    PLC_driver.failed = 1;
    issue();
    deliver(identificationReply());
    deliver(fileReply());
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(2, PLC_driver.readList.size());
    EXPECT_EQ(0, PLC_driver.cycleCount);
    EXPECT_EQ(1, PLC_driver.failed) << "only a good data reply takes the failure back";
    EXPECT_THAT(resultCalls, IsEmpty());
}

TEST_F(ReplyProcessing, LoginEndsWhenTheFrameCountIsReached)
{
    RW_VAR var;
    handshake_data(&var);
    settings.frameCount = 1;
    deliver(identificationReply());
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(ReplyProcessing, LoginGoesOnWhileTheFrameCountIsNotReached)
{
    RW_VAR var;
    handshake_data(&var);
    settings.frameCount = 3;
    deliver(identificationReply());
    EXPECT_EQ(1, deliver(fileReply(0x34, 0x12))->result);
    EXPECT_EQ(2, settings.frameIndex);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    settings.frameCount = 2;
    handshake_data(&var);
    deliver(identificationReply());
    EXPECT_EQ(0, PLC_driver.loggedIn) << "one answer of two";
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    deliver(fileReply(0x34, 0x12));
    EXPECT_EQ(1, PLC_driver.loggedIn);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(ReplyProcessing, LoginRepliesInPiecesAreWaitedFor)
{
    RW_VAR var;
    handshake_data(&var);
    const QByteArray reply = identificationReply();
    for (int size = 1; size < reply.size(); ++size)
        ASSERT_EQ(0, once(reply.left(size))) << size << " bytes";
    EXPECT_EQ(0, settings.retryCount);
    EXPECT_EQ(1, deliver(reply)->result);
    EXPECT_EQ(1, settings.frameIndex);
}

struct RefusedLogin {
    const char* name;
    int frameIndex;
    int replyLength;
    QByteArray reply;
};

void PrintTo(const RefusedLogin& row, std::ostream* out)
{
    *out << row.name;
}

class LoginRefusal : public ReplyProcessing, public ::testing::WithParamInterface<RefusedLogin> {};

TEST_P(LoginRefusal, Gives201AndAnEmptyQueueAndNothingElse)
{
    settings.retryLimit = 3;
    settings.retryCount = 1;
    addReads(2);
    PLC_driver.cycleCount = 1;
    PLC_driver.reply.category = 8;
    issue();
    PLC_driver.writeTries = 2;
    PLC_driver.onceTries = 1;
    settings.frameIndex = GetParam().frameIndex;
    PLC_driver.requestQueue.first().replyLength = GetParam().replyLength;
    RW_VAR* result = deliver(GetParam().reply);
    EXPECT_EQ(201, result->result);
    EXPECT_EQ(8, result->category);
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(0, PLC_driver.failed);
    EXPECT_EQ(1, PLC_driver.cycleCount);
    EXPECT_EQ(2, PLC_driver.writeTries);
    EXPECT_EQ(1, PLC_driver.onceTries);
    EXPECT_EQ(1, settings.retryCount);
    EXPECT_EQ(settings.frameIndex, GetParam().frameIndex);
    EXPECT_THAT(addressesOf(PLC_driver.readList), ElementsAre(0, 1));
    EXPECT_EQ(-1, PLC_driver.readList.first().result);
    EXPECT_THAT(resultCalls, IsEmpty());
    EXPECT_THAT(failureCalls, IsEmpty());
    EXPECT_EQ(20, issue().frameLength) << "the next request begins the login anew";
    EXPECT_EQ(0, settings.frameIndex);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LoginRefusal,
    ::testing::Values(RefusedLogin{"FirstReplyTooSmall", 0, -1, identificationReply(199)},
                      RefusedLogin{"SecondReplyTooSmall", 1, -1, fileReply(1, 2, 29)},
                      RefusedLogin{"RefusedStatus", 0, -1, refusedReply()},
                      RefusedLogin{"FewerBytesThanTheRequestWants", 0, 0, hex("BB BB 00 00 C8")},
                      RefusedLogin{"NoBytesAtAll", 1, 0, QByteArray()},
                      RefusedLogin{"NoReplyIsExpected", 2, -1, identificationReply()},
                      RefusedLogin{"FixedLength", 0, 206, identificationReply(150)}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(ReplyProcessing, LoginWithoutAnAnswerIsRetriedAndThenFailsTheBatch)
{
    settings.retryLimit = 1;
    PLC_driver.writeList.append(tagged(0, 4, 11));
    issue();
    EXPECT_EQ(0, once(QByteArray()));
    EXPECT_EQ(20, issue().frameLength);
    EXPECT_EQ(2, PLC_driver.requestQueue.size());
    EXPECT_EQ(41, once(QByteArray()));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_THAT(resultCalls, ElementsAre(ResultCall{77, 4, 11, 2}));
    EXPECT_THAT(failureCalls, ElementsAre(FailureCall{true, 0, 4, 1}));
    EXPECT_EQ(1, PLC_driver.failed);
}

TEST_F(ReplyProcessing, LoginReplyOfFixedLengthThatIsNoFrameGives71)
{
    RW_VAR var;
    handshake_data(&var);
    PLC_driver.requestQueue.first().replyLength = 206;
    EXPECT_EQ(71, once(identificationReply().left(100)));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

} // namespace
} // namespace plc::test
