#include "frames/handshake.h"

#include <climits>

#include "driver/reply_judging.h"
#include "driver/request_building.h"
#include "support/driver_fixture.h"

namespace plc {
namespace test {
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
    EXPECT_EQ(handshake_data(&var), 0);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 2);
    const Protocol& request = PLC_driver.requestQueue.at(0);
    EXPECT_EQ(request.frame, hex("BB BB 00 00 00 0E 01 00 00 00 02 00 00 00 06 00 00 00 00 00"));
    EXPECT_EQ(request.frame.size(), 20);
    EXPECT_EQ(request.frameLength, 20);
}

TEST_F(Handshake, QueuesTheFileRequestSecond)
{
    RW_VAR var;
    handshake_data(&var);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 2);
    const Protocol& request = PLC_driver.requestQueue.at(1);
    EXPECT_EQ(request.frame,
              hex("BB BB 00 00 00 11 31 00 00 0D 44 4F 57 4E 4C 4F 41 44 2E 53 44 42 00"));
    EXPECT_EQ(request.frame.mid(10), QByteArray("DOWNLOAD.SDB", 13));
    EXPECT_EQ(request.frame.size(), 23);
    EXPECT_EQ(request.frameLength, 23);
}

TEST_F(Handshake, BothRequestsExpectAReplyOfVariableLength)
{
    RW_VAR var;
    handshake_data(&var);
    for (const Protocol& request : PLC_driver.requestQueue) {
        EXPECT_EQ(request.replyLength, -1);
        EXPECT_EQ(request.dataOffset, 0);
        EXPECT_EQ(request.minReplyLength, 6);
        EXPECT_EQ(request.extra1, 0);
        EXPECT_EQ(request.extra2, 0);
        EXPECT_EQ(request.extra3, 0);
    }
}

TEST_F(Handshake, BothRequestsCarryACopyOfTheVariable)
{
    RW_VAR var = makeVar(3, 0x40, 8, 5);
    var.category = 4;
    var.aux1 = 21;
    var.aux2 = 22;
    var.aux3 = 23;
    var.deviceNo = 24;
    var.result = 25;
    var.station = 26;
    var.aux12 = 27;
    var.label = QLatin1String("A.b");
    var.subLabel = QLatin1String("c");
    var.data = hex("01 02");
    handshake_data(&var);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 2);
    for (const Protocol& request : PLC_driver.requestQueue) {
        EXPECT_EQ(request.var.category, 4);
        EXPECT_EQ(request.var.aux1, 21);
        EXPECT_EQ(request.var.aux2, 22);
        EXPECT_EQ(request.var.aux3, 23);
        EXPECT_EQ(request.var.deviceNo, 24);
        EXPECT_EQ(request.var.result, 25);
        EXPECT_EQ(request.var.label, QLatin1String("A.b"));
        EXPECT_EQ(request.var.subLabel, QLatin1String("c"));
        EXPECT_EQ(request.var.dataType, 5);
        EXPECT_EQ(request.var.address, 0x40);
        EXPECT_EQ(request.var.station, 26);
        EXPECT_EQ(request.var.length, 8);
        EXPECT_EQ(request.var.aux12, 27);
        EXPECT_EQ(request.var.areaIndex, 3);
        EXPECT_EQ(request.var.data, hex("01 02"));
    }
}

TEST_F(Handshake, StartsATransactionOfTwoFrames)
{
    settings.frameCount = 7;
    settings.frameIndex = 5;
    RW_VAR var;
    handshake_data(&var);
    EXPECT_EQ(settings.frameCount, 2);
    EXPECT_EQ(settings.frameIndex, 0);
}

TEST_F(Handshake, AppendsBehindWhatTheQueueHolds)
{
    Protocol waiting;
    waiting.frame = hex("01 02 03");
    queueRequest(waiting);
    RW_VAR var;
    handshake_data(&var);
    ASSERT_EQ(PLC_driver.requestQueue.size(), 3);
    EXPECT_EQ(PLC_driver.requestQueue.at(0).frame, hex("01 02 03"));
    EXPECT_EQ(PLC_driver.requestQueue.at(1).frameLength, 20);
    EXPECT_EQ(PLC_driver.requestQueue.at(2).frameLength, 23);
    EXPECT_EQ(settings.frameCount, 2);
}

TEST_F(Handshake, DoesNotLogIn)
{
    RW_VAR var;
    handshake_data(&var);
    EXPECT_EQ(PLC_driver.loggedIn, 0);
}

TEST_F(Handshake, NullVariableQueuesNothing)
{
    EXPECT_EQ(handshake_data(nullptr), 0);
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
    EXPECT_EQ(PLC_driver.plcInfo1, 0);
    EXPECT_EQ(PLC_driver.plcInfo2, 0);
}

TEST_F(Handshake, FirstReplyNeeds200PayloadBytes)
{
    expectReply(0);
    EXPECT_EQ(check(identificationReply(199)), 9);
    EXPECT_EQ(check(identificationReply(200)), 0);
    EXPECT_EQ(check(identificationReply(201)), 0);
    EXPECT_EQ(check(identificationReply(0)), 9);
    EXPECT_EQ(check(identificationReply(255)), 0);
    EXPECT_EQ(check(identificationReply(256)), 0);
    EXPECT_EQ(check(identificationReply(0xFFFF)), 0);
}

TEST_F(Handshake, FirstReplyCapturesNothing)
{
    expectReply(0);
    QByteArray reply = identificationReply();
    reply[24] = 0x34;
    reply[25] = 0x12;
    EXPECT_EQ(check(reply), 0);
    EXPECT_EQ(PLC_driver.plcInfo1, 0);
    EXPECT_EQ(PLC_driver.plcInfo2, 0);
}

TEST_F(Handshake, SecondReplyNeeds30PayloadBytes)
{
    expectReply(1);
    EXPECT_EQ(check(fileReply(0, 0, 29)), 13);
    EXPECT_EQ(check(fileReply(0, 0, 30)), 0);
    EXPECT_EQ(check(fileReply(0, 0, 31)), 0);
    EXPECT_EQ(check(fileReply(0, 0, 0)), 13);
    EXPECT_EQ(check(fileReply(0, 0, 256)), 0);
}

TEST_F(Handshake, SecondReplyGivesTheTwoBytesInReverseOrder)
{
    expectReply(1);
    EXPECT_EQ(check(fileReply(0x34, 0x12)), 0);
    EXPECT_EQ(PLC_driver.plcInfo1, 0x12);
    EXPECT_EQ(PLC_driver.plcInfo2, 0x34);
}

TEST_F(Handshake, BytesAbove127AreCapturedUnchanged)
{
    expectReply(1);
    EXPECT_EQ(check(fileReply(0xFE, 0x80)), 0);
    EXPECT_EQ(PLC_driver.plcInfo1, 0x80);
    EXPECT_EQ(PLC_driver.plcInfo2, 0xFE);
}

TEST_F(Handshake, RefusedSecondReplyKeepsTheBytesOfTheLastLogin)
{
    PLC_driver.plcInfo1 = 1;
    PLC_driver.plcInfo2 = 2;
    expectReply(1);
    EXPECT_EQ(check(fileReply(0x34, 0x12, 29)), 13);
    EXPECT_EQ(PLC_driver.plcInfo1, 1);
    EXPECT_EQ(PLC_driver.plcInfo2, 2);
}

TEST_F(Handshake, ReplyShorterThanTheRequestExpectsIsTooShort)
{
    expectReply(0, 6);
    EXPECT_EQ(check(hex("BB BB 00 00 00")), 8);
    expectReply(0, 207);
    EXPECT_EQ(check(identificationReply()), 8);
    expectReply(0, 206);
    EXPECT_EQ(check(identificationReply()), 0);
    expectReply(1, INT_MAX);
    EXPECT_EQ(check(fileReply(0x34, 0x12)), 8);
    EXPECT_EQ(PLC_driver.plcInfo1, 0);
}

TEST_F(Handshake, ReplyWithoutAHeaderIsTooShortWhateverTheRequestExpects)
{
    for (int frameIndex : {0, 1, 2}) {
        for (int minReplyLength : {0, -1, INT_MIN}) {
            expectReply(frameIndex, minReplyLength);
            for (int size = 0; size < 6; ++size)
                EXPECT_EQ(check(identificationReply().left(size)), 8)
                    << size << " bytes, frame " << frameIndex << ", at least " << minReplyLength;
        }
    }
}

TEST_F(Handshake, NullReplyIsTooShort)
{
    expectReply(0);
    EXPECT_EQ(handshake_data_check(nullptr), 8);
    expectReply(1, 0);
    EXPECT_EQ(handshake_data_check(nullptr), 8);
}

TEST_F(Handshake, EmptyQueueMakesEveryReplyTooShort)
{
    EXPECT_EQ(check(identificationReply()), 8);
    settings.frameIndex = 1;
    EXPECT_EQ(check(fileReply(0x34, 0x12)), 8);
    EXPECT_EQ(PLC_driver.plcInfo1, 0);
}

TEST_F(Handshake, AnyOtherFrameIndexIsNotExpected)
{
    for (int frameIndex : {2, 3, -1, INT_MAX, INT_MIN}) {
        expectReply(frameIndex);
        EXPECT_EQ(check(fileReply(0x34, 0x12, 200)), 1) << "frame index " << frameIndex;
    }
    EXPECT_EQ(PLC_driver.plcInfo1, 0);
    EXPECT_EQ(PLC_driver.plcInfo2, 0);
}

TEST_F(Handshake, ThresholdsAreTheOnlyTestOfTheContent)
{
    expectReply(0);
    EXPECT_EQ(check(hex("00 00 99 99 00 C8 FF FF")), 0); // states 200 bytes, holds 2
    expectReply(1);
    QByteArray second = fileReply(0x34, 0x12, 24);
    second.replace(0, 8, hex("41 42 43 44 00 1E FF FF")); // states 30 bytes, holds 24
    EXPECT_EQ(check(second), 0);
    EXPECT_EQ(PLC_driver.plcInfo1, 0x12);
    EXPECT_EQ(PLC_driver.plcInfo2, 0x34);
}

TEST_F(Handshake, HighHalfOfTheLengthDoesNotCount)
{
    expectReply(0);
    EXPECT_EQ(check(hex("BB BB 00 01 00 00")), 9);
}

TEST_F(Handshake, SecondReplyThatStates30BytesButEndsBeforeByte25IsRefused)
{
    PLC_driver.plcInfo1 = 1;
    PLC_driver.plcInfo2 = 2;
    const QByteArray whole = fileReply(0x34, 0x12);
    for (int size = 6; size < 26; ++size) {
        expectReply(1);
        EXPECT_EQ(check(whole.left(size)), 13) << size << " bytes";
    }
    EXPECT_EQ(PLC_driver.plcInfo1, 1);
    EXPECT_EQ(PLC_driver.plcInfo2, 2);
    expectReply(1);
    EXPECT_EQ(check(whole.left(26)), 0);
    EXPECT_EQ(PLC_driver.plcInfo1, 0x12);
    EXPECT_EQ(PLC_driver.plcInfo2, 0x34);
}

TEST_F(Handshake, CheckChangesNeitherQueueNorCounters)
{
    expectReply(1);
    settings.frameCount = 2;
    check(fileReply(0x34, 0x12));
    check(fileReply(0x34, 0x12, 29));
    EXPECT_EQ(PLC_driver.requestQueue.size(), 1);
    EXPECT_EQ(settings.frameIndex, 1);
    EXPECT_EQ(settings.frameCount, 2);
    EXPECT_EQ(PLC_driver.loggedIn, 0);
    EXPECT_EQ(PLC_driver.reply.result, 0);
}

} // namespace
} // namespace test
} // namespace plc
