#include "frames/frame_layer.h"

#include <climits>

#include "driver/reply_judging.h"
#include "support/driver_fixture.h"

namespace plc::test {
namespace {

int completeness(const QByteArray& reply)
{
    ExactBytes bytes(reply);
    return infinite_length_data_reception(bytes.get());
}

int validity(const QByteArray& reply)
{
    ExactBytes bytes(reply);
    return CheckGetData(bytes.get(), bytes.size());
}

class FrameLayer : public DriverTest {
protected:
    static void expectReplyFor(int aux2)
    {
        RW_VAR var;
        var.aux2 = aux2;
        queueRequest(makeRequest(var));
    }
};

TEST(StatedPayloadLength, IsTheLowSixteenBitsMostSignificantFirst)
{
    EXPECT_EQ(0, statedPayloadLength(hex("BB BB 00 00 00 00")));
    EXPECT_EQ(0x1234, statedPayloadLength(hex("BB BB 00 00 12 34")));
    EXPECT_EQ(0xFFFF, statedPayloadLength(hex("BB BB 00 00 FF FF")));
    EXPECT_EQ(2, statedPayloadLength(hex("BB BB 77 66 00 02 00 00")));
}

TEST(StatedPayloadLength, IsZeroWithoutAWholeHeader)
{
    EXPECT_EQ(0, statedPayloadLength(hex("BB BB 00 00 FF")));
    EXPECT_EQ(0, statedPayloadLength(QByteArray()));
}

TEST(ReplyCompleteness, FiveBytesAreTooFew)
{
    EXPECT_EQ(8, completeness(hex("BB BB 00 00 00")));
    EXPECT_EQ(8, completeness(hex("BB")));
    EXPECT_EQ(8, completeness(QByteArray()));
}

TEST(ReplyCompleteness, NullIsAnEmptyReply)
{
    EXPECT_EQ(8, infinite_length_data_reception(nullptr));
}

TEST(ReplyCompleteness, HeaderAloneIsAWholeFrame)
{
    EXPECT_EQ(0, completeness(hex("BB BB 00 00 00 00")));
}

TEST(ReplyCompleteness, SizeMustEqualTheStatedLength)
{
    EXPECT_EQ(0, completeness(hex("BB BB 00 00 00 02 00 00")));
    EXPECT_EQ(8, completeness(hex("BB BB 00 00 00 02 00")));
    EXPECT_EQ(8, completeness(hex("BB BB 00 00 00 02 00 00 00")));
    EXPECT_EQ(8, completeness(hex("BB BB 00 00 00 02 00 00 BB BB 00 00 00 02 00 00")));
}

TEST(ReplyCompleteness, LengthHasTwoBytes)
{
    EXPECT_EQ(0, completeness(frameOf(QByteArray(0x0100, '\0'))));
    EXPECT_EQ(0, completeness(frameOf(QByteArray(0x01FF, '\0'))));
    EXPECT_EQ(0, completeness(frameOf(QByteArray(0xFFFF, '\0'))));
    EXPECT_EQ(8, completeness(frameOf(QByteArray(0x8000, '\0')).left(0x8005)));
}

TEST(ReplyCompleteness, HighHalfOfTheLengthIsNotLookedAt)
{
    EXPECT_EQ(0, completeness(hex("BB BB 12 34 00 02 00 00")));
    // 65536 payload bytes as the four length bytes say are more than the low half states.
    QByteArray large = hex("BB BB 00 01 00 00") + QByteArray(0x10000, '\0');
    EXPECT_EQ(8, completeness(large));
}

TEST(ReplyCompleteness, MagicIsNotLookedAt)
{
    EXPECT_EQ(0, completeness(hex("00 00 00 00 00 02 00 00")));
    EXPECT_EQ(0, completeness(hex("41 42 43 44 00 01 FF")));
}

TEST(ReplyCompleteness, EveryTruncationOfAFrameIsIncomplete)
{
    const QByteArray whole = uniformReadReply(3, 4);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_EQ(8, completeness(whole.left(size))) << size << " bytes";
    EXPECT_EQ(0, completeness(whole));
}

TEST_F(FrameLayer, GoodReplyToStoreGivesOne)
{
    expectReplyFor(0);
    EXPECT_EQ(1, validity(hex("BB BB 00 00 00 02 00 00")));
    EXPECT_EQ(1, validity(uniformReadReply(3, 4)));
}

TEST_F(FrameLayer, GoodReplyToAcknowledgeGivesTwo)
{
    expectReplyFor(5);
    EXPECT_EQ(2, validity(hex("BB BB 00 00 00 02 00 00")));
}

TEST_F(FrameLayer, EveryStoreFlagButZeroGivesTwo)
{
    for (int aux2 : {1, 2, 256, -1, INT_MAX, INT_MIN}) {
        PLC_driver.requestQueue.clear();
        expectReplyFor(aux2);
        EXPECT_EQ(2, validity(hex("BB BB 00 00 00 02 00 00"))) << "aux2 " << aux2;
    }
}

TEST_F(FrameLayer, OnlyTheHeadRequestDecidesAboutStoring)
{
    expectReplyFor(5);
    expectReplyFor(0);
    EXPECT_EQ(2, validity(hex("BB BB 00 00 00 02 00 00")));
}

TEST_F(FrameLayer, StatusOtherThanZeroIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 00 01")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 01 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 FF FF")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 04 80 00 00 00")));
}

TEST_F(FrameLayer, StatusOtherThanZeroIsInvalidForAnAcknowledgementToo)
{
    expectReplyFor(5);
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 00 01")));
}

TEST_F(FrameLayer, SizeMustEqualTheStatedLength)
{
    expectReplyFor(0);
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 03 00 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 01 00 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 01 02 00 00")));
}

TEST_F(FrameLayer, ReplyWithoutAWholeStatusIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(0, validity(QByteArray()));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 01 00")));
}

TEST_F(FrameLayer, NullReplyIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(0, CheckGetData(nullptr, 0));
    EXPECT_EQ(0, CheckGetData(nullptr, 8));
}

TEST_F(FrameLayer, EmptyQueueMakesEveryReplyInvalid)
{
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 00 00")));
    EXPECT_EQ(0, validity(hex("BB BB 00 00 00 02 00 01")));
}

TEST_F(FrameLayer, MagicAndHighHalfOfTheLengthAreNotLookedAt)
{
    expectReplyFor(0);
    EXPECT_EQ(1, validity(hex("BB BB 12 34 00 02 00 00")));
    EXPECT_EQ(1, validity(hex("00 41 00 00 00 02 00 00")));
}

TEST_F(FrameLayer, SizeArgumentIsIgnored)
{
    expectReplyFor(0);
    const QByteArray reply = hex("BB BB 00 00 00 02 00 00");
    for (int size : {0, 7, 9, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(1, CheckGetData(&reply, size)) << "size " << size;
}

TEST_F(FrameLayer, EveryTruncationOfAReplyIsInvalid)
{
    expectReplyFor(0);
    const QByteArray whole = uniformReadReply(3, 4);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_EQ(0, validity(whole.left(size))) << size << " bytes";
}

TEST_F(FrameLayer, ChecksChangeNothing)
{
    expectReplyFor(0);
    QByteArray reply = hex("BB BB 00 00 00 02 00 00");
    infinite_length_data_reception(&reply);
    CheckGetData(&reply, 8);
    EXPECT_EQ(hex("BB BB 00 00 00 02 00 00"), reply);
    ASSERT_EQ(1, PLC_driver.requestQueue.size());
    EXPECT_EQ(-1, PLC_driver.requestQueue.first().replyLength);
    EXPECT_EQ(0, PLC_driver.reply.result);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(0, settings.frameIndex);
}

} // namespace
} // namespace plc::test
