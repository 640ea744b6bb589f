#include "frames/handshake.h"

#include <climits>

#include "driver/reply_judging.h"
#include "driver/request_building.h"
#include "support/driver_fixture.h"
#include "support/record_checks.h"

namespace plc::test {
namespace {

class Handshake : public DriverTest {
protected:
    /// A login request at the head of the queue, of which `frameIndex` replies were accepted.
    void expectReply(int frameIndex, int minReplyLength = 6)
    {
        PLC_driver.requestQueue.clear();
        Protocol request = makeRequest(RW_VAR());
        request.minReplyLength = minReplyLength;
        queueRequest(request);
        settings.frameIndex = frameIndex;
    }

    static int check(const QByteArray& reply)
    {
        ExactBytes bytes(reply);
        return handshake_data_check(bytes.get());
    }
};

TEST_F(Handshake, QueuesTheIdentificationFrameFirst)
{
    RW_VAR var;
    EXPECT_EQ(0, handshake_data(&var));
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    const Protocol& request = PLC_driver.requestQueue.at(0);
    EXPECT_EQ(hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00"), request.frame);
    EXPECT_EQ(20, request.frame.size());
    EXPECT_EQ(20, request.frameLength);
}

TEST_F(Handshake, QueuesTheFileRequestSecond)
{
    RW_VAR var;
    handshake_data(&var);
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    const Protocol& request = PLC_driver.requestQueue.at(1);
    EXPECT_EQ(hex("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"),
              request.frame);
    EXPECT_EQ(QByteArray("DOWNLOAD.SDB", 13), request.frame.mid(10));
    EXPECT_EQ(23, request.frame.size());
    EXPECT_EQ(23, request.frameLength);
}

TEST_F(Handshake, BothRequestsExpectAReplyOfVariableLength)
{
    RW_VAR var;
    handshake_data(&var);
    for (const Protocol& request : PLC_driver.requestQueue) {
        EXPECT_EQ(-1, request.replyLength);
        EXPECT_EQ(0, request.dataOffset);
        EXPECT_EQ(6, request.minReplyLength);
        EXPECT_EQ(0, request.extra1);
        EXPECT_EQ(0, request.extra2);
        EXPECT_EQ(0, request.extra3);
    }
}

TEST_F(Handshake, BothRequestsCarryACopyOfTheVariable)
{
    RW_VAR var = fullRecord();
    handshake_data(&var);
    ASSERT_EQ(2, PLC_driver.requestQueue.size());
    for (const Protocol& request : PLC_driver.requestQueue)
        expectEqualRecords(fullRecord(), request.var);
}

TEST_F(Handshake, StartsATransactionOfTwoFrames)
{
    settings.frameCount = 7;
    settings.frameIndex = 5;
    RW_VAR var;
    handshake_data(&var);
    EXPECT_EQ(2, settings.frameCount);
    EXPECT_EQ(0, settings.frameIndex);
}

TEST_F(Handshake, AppendsBehindWhatTheQueueHolds)
{
    Protocol waiting;
    waiting.frame = hex("01 02 03");
    queueRequest(waiting);
    RW_VAR var;
    handshake_data(&var);
    ASSERT_EQ(3, PLC_driver.requestQueue.size());
    EXPECT_EQ(hex("01 02 03"), PLC_driver.requestQueue.at(0).frame);
    EXPECT_EQ(20, PLC_driver.requestQueue.at(1).frameLength);
    EXPECT_EQ(23, PLC_driver.requestQueue.at(2).frameLength);
    EXPECT_EQ(2, settings.frameCount);
}

TEST_F(Handshake, DoesNotLogIn)
{
    RW_VAR var;
    handshake_data(&var);
    EXPECT_EQ(0, PLC_driver.loggedIn);
}

TEST_F(Handshake, NullVariableQueuesNothing)
{
    EXPECT_EQ(0, handshake_data(nullptr));
    EXPECT_TRUE(PLC_driver.requestQueue.isEmpty());
}

TEST_F(Handshake, WithoutSettingsNeitherCallTouchesAnything)
{
    SetComInfo(nullptr);
    RW_VAR var;
    handshake_data(&var);
    PLC_driver.requestQueue.clear();
    queueRequest(makeRequest(var));
    EXPECT_NE(check(fileReply(0x34, 0x12)), 0);
    EXPECT_EQ(0, PLC_driver.plcInfo1);
    EXPECT_EQ(0, PLC_driver.plcInfo2);
}

TEST_F(Handshake, FirstReplyNeeds200PayloadBytes)
{
    expectReply(0);
    EXPECT_EQ(9, check(identificationReply(199)));
    EXPECT_EQ(0, check(identificationReply(200)));
    EXPECT_EQ(0, check(identificationReply(201)));
    EXPECT_EQ(9, check(identificationReply(0)));
    EXPECT_EQ(0, check(identificationReply(255)));
    EXPECT_EQ(0, check(identificationReply(256)));
    EXPECT_EQ(0, check(identificationReply(0xFFFF)));
}

TEST_F(Handshake, FirstReplyCapturesNothing)
{
    expectReply(0);
    QByteArray reply = identificationReply();
    reply[24] = 0x34;
    reply[25] = 0x12;
    EXPECT_EQ(0, check(reply));
    EXPECT_EQ(0, PLC_driver.plcInfo1);
    EXPECT_EQ(0, PLC_driver.plcInfo2);
}

TEST_F(Handshake, SecondReplyNeeds30PayloadBytes)
{
    expectReply(1);
    EXPECT_EQ(13, check(fileReply(0, 0, 29)));
    EXPECT_EQ(0, check(fileReply(0, 0, 30)));
    EXPECT_EQ(0, check(fileReply(0, 0, 31)));
    EXPECT_EQ(13, check(fileReply(0, 0, 0)));
    EXPECT_EQ(0, check(fileReply(0, 0, 256)));
}

TEST_F(Handshake, SecondReplyGivesTheTwoBytesInReverseOrder)
{
    expectReply(1);
    EXPECT_EQ(0, check(fileReply(0x34, 0x12)));
    EXPECT_EQ(0x12, PLC_driver.plcInfo1);
    EXPECT_EQ(0x34, PLC_driver.plcInfo2);
}

TEST_F(Handshake, BytesAbove127AreCapturedUnchanged)
{
    expectReply(1);
    EXPECT_EQ(0, check(fileReply(0xFE, 0x80)));
    EXPECT_EQ(0x80, PLC_driver.plcInfo1);
    EXPECT_EQ(0xFE, PLC_driver.plcInfo2);
}

TEST_F(Handshake, RefusedSecondReplyKeepsTheBytesOfTheLastLogin)
{
    PLC_driver.plcInfo1 = 1;
    PLC_driver.plcInfo2 = 2;
    expectReply(1);
    EXPECT_EQ(13, check(fileReply(0x34, 0x12, 29)));
    EXPECT_EQ(1, PLC_driver.plcInfo1);
    EXPECT_EQ(2, PLC_driver.plcInfo2);
}

TEST_F(Handshake, ReplyShorterThanTheRequestExpectsIsTooShort)
{
    expectReply(0, 6);
    EXPECT_EQ(8, check(hex("BB BB 00 00 00")));
    expectReply(0, 207);
    EXPECT_EQ(8, check(identificationReply()));
    expectReply(0, 206);
    EXPECT_EQ(0, check(identificationReply()));
    expectReply(1, INT_MAX);
    EXPECT_EQ(8, check(fileReply(0x34, 0x12)));
    EXPECT_EQ(0, PLC_driver.plcInfo1);
}

TEST_F(Handshake, ReplyWithoutAHeaderIsTooShortWhateverTheRequestExpects)
{
    for (int frameIndex : {0, 1, 2}) {
        for (int minReplyLength : {0, -1, INT_MIN}) {
            expectReply(frameIndex, minReplyLength);
            for (int size = 0; size < 6; ++size)
                EXPECT_EQ(8, check(identificationReply().left(size)))
                    << size << " bytes, frame " << frameIndex << ", at least " << minReplyLength;
        }
    }
}

TEST_F(Handshake, NullReplyIsTooShort)
{
    expectReply(0);
    EXPECT_EQ(8, handshake_data_check(nullptr));
    expectReply(1, 0);
    EXPECT_EQ(8, handshake_data_check(nullptr));
}

TEST_F(Handshake, EmptyQueueMakesEveryReplyTooShort)
{
    EXPECT_EQ(8, check(identificationReply()));
    settings.frameIndex = 1;
    EXPECT_EQ(8, check(fileReply(0x34, 0x12)));
    EXPECT_EQ(0, PLC_driver.plcInfo1);
}

TEST_F(Handshake, AnyOtherFrameIndexIsNotExpected)
{
    for (int frameIndex : {2, 3, -1, INT_MAX, INT_MIN}) {
        expectReply(frameIndex);
        EXPECT_EQ(1, check(fileReply(0x34, 0x12, 200))) << "frame index " << frameIndex;
    }
    EXPECT_EQ(0, PLC_driver.plcInfo1);
    EXPECT_EQ(0, PLC_driver.plcInfo2);
}

TEST_F(Handshake, ThresholdsAreTheOnlyTestOfTheContent)
{
    expectReply(0);
    EXPECT_EQ(0, check(hex("00 00 99 99 00 C8 FF FF"))); // states 200 bytes, holds 2
    expectReply(1);
    QByteArray second = fileReply(0x34, 0x12, 24);
    second.replace(0, 8, hex("41 42 43 44 00 1E FF FF")); // states 30 bytes, holds 24
    EXPECT_EQ(0, check(second));
    EXPECT_EQ(0x12, PLC_driver.plcInfo1);
    EXPECT_EQ(0x34, PLC_driver.plcInfo2);
}

TEST_F(Handshake, HighHalfOfTheLengthDoesNotCount)
{
    expectReply(0);
    EXPECT_EQ(9, check(hex("BB BB 00 01 00 00")));
}

TEST_F(Handshake, SecondReplyThatStates30BytesButEndsBeforeByte25IsRefused)
{
    PLC_driver.plcInfo1 = 1;
    PLC_driver.plcInfo2 = 2;
    const QByteArray whole = fileReply(0x34, 0x12);
    for (int size = 6; size < 26; ++size) {
        expectReply(1);
        EXPECT_EQ(13, check(whole.left(size))) << size << " bytes";
    }
    EXPECT_EQ(1, PLC_driver.plcInfo1);
    EXPECT_EQ(2, PLC_driver.plcInfo2);
    expectReply(1);
    EXPECT_EQ(0, check(whole.left(26)));
    EXPECT_EQ(0x12, PLC_driver.plcInfo1);
    EXPECT_EQ(0x34, PLC_driver.plcInfo2);
}

TEST_F(Handshake, CheckChangesNeitherQueueNorCounters)
{
    expectReply(1);
    settings.frameCount = 2;
    check(fileReply(0x34, 0x12));
    check(fileReply(0x34, 0x12, 29));
    EXPECT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(1, settings.frameIndex);
    EXPECT_EQ(2, settings.frameCount);
    EXPECT_EQ(0, PLC_driver.loggedIn);
    EXPECT_EQ(0, PLC_driver.reply.result);
}

} // namespace
} // namespace plc::test
