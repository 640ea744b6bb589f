#include "frames/frame_layer.h"

#include <climits>

#include "driver/reply_judging.h"
#include "support/driver_fixture.h"

namespace plc {
namespace test {
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
    EXPECT_EQ(statedPayloadLength(hex("BB BB 00 00 00 00")), 0);
    EXPECT_EQ(statedPayloadLength(hex("BB BB 00 00 12 34")), 0x1234);
    EXPECT_EQ(statedPayloadLength(hex("BB BB 00 00 FF FF")), 0xFFFF);
    EXPECT_EQ(statedPayloadLength(hex("BB BB 77 66 00 02 00 00")), 2);
}

TEST(StatedPayloadLength, IsZeroWithoutAWholeHeader)
{
    EXPECT_EQ(statedPayloadLength(hex("BB BB 00 00 FF")), 0);
    EXPECT_EQ(statedPayloadLength(QByteArray()), 0);
}

TEST(ReplyCompleteness, FiveBytesAreTooFew)
{
    EXPECT_EQ(completeness(hex("BB BB 00 00 00")), 8);
    EXPECT_EQ(completeness(hex("BB")), 8);
    EXPECT_EQ(completeness(QByteArray()), 8);
}

TEST(ReplyCompleteness, NullIsAnEmptyReply)
{
    EXPECT_EQ(infinite_length_data_reception(nullptr), 8);
}

TEST(ReplyCompleteness, HeaderAloneIsAWholeFrame)
{
    EXPECT_EQ(completeness(hex("BB BB 00 00 00 00")), 0);
}

TEST(ReplyCompleteness, SizeMustEqualTheStatedLength)
{
    EXPECT_EQ(completeness(hex("BB BB 00 00 00 02 00 00")), 0);
    EXPECT_EQ(completeness(hex("BB BB 00 00 00 02 00")), 8);
    EXPECT_EQ(completeness(hex("BB BB 00 00 00 02 00 00 00")), 8);
    EXPECT_EQ(completeness(hex("BB BB 00 00 00 02 00 00 BB BB 00 00 00 02 00 00")), 8);
}

TEST(ReplyCompleteness, LengthHasTwoBytes)
{
    EXPECT_EQ(completeness(frameOf(QByteArray(0x0100, '\0'))), 0);
    EXPECT_EQ(completeness(frameOf(QByteArray(0x01FF, '\0'))), 0);
    EXPECT_EQ(completeness(frameOf(QByteArray(0xFFFF, '\0'))), 0);
    EXPECT_EQ(completeness(frameOf(QByteArray(0x8000, '\0')).left(0x8005)), 8);
}

TEST(ReplyCompleteness, HighHalfOfTheLengthIsNotLookedAt)
{
    EXPECT_EQ(completeness(hex("BB BB 12 34 00 02 00 00")), 0);
    // 65536 payload bytes as the four length bytes say are more than the low half states.
    QByteArray large = hex("BB BB 00 01 00 00") + QByteArray(0x10000, '\0');
    EXPECT_EQ(completeness(large), 8);
}

TEST(ReplyCompleteness, MagicIsNotLookedAt)
{
    EXPECT_EQ(completeness(hex("00 00 00 00 00 02 00 00")), 0);
    EXPECT_EQ(completeness(hex("41 42 43 44 00 01 FF")), 0);
}

TEST(ReplyCompleteness, EveryTruncationOfAFrameIsIncomplete)
{
    const QByteArray whole = uniformReadReply(3, 4);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_EQ(completeness(whole.left(size)), 8) << size << " bytes";
    EXPECT_EQ(completeness(whole), 0);
}

TEST_F(FrameLayer, GoodReplyToStoreGivesOne)
{
    expectReplyFor(0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 00")), 1);
    EXPECT_EQ(validity(uniformReadReply(3, 4)), 1);
}

TEST_F(FrameLayer, GoodReplyToAcknowledgeGivesTwo)
{
    expectReplyFor(5);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 00")), 2);
}

TEST_F(FrameLayer, EveryStoreFlagButZeroGivesTwo)
{
    for (int aux2 : {1, 2, 256, -1, INT_MAX, INT_MIN}) {
        PLC_driver.requestQueue.clear();
        expectReplyFor(aux2);
        EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 00")), 2) << "aux2 " << aux2;
    }
}

TEST_F(FrameLayer, OnlyTheHeadRequestDecidesAboutStoring)
{
    expectReplyFor(5);
    expectReplyFor(0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 00")), 2);
}

TEST_F(FrameLayer, StatusOtherThanZeroIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 01")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 01 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 FF FF")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 04 80 00 00 00")), 0);
}

TEST_F(FrameLayer, StatusOtherThanZeroIsInvalidForAnAcknowledgementToo)
{
    expectReplyFor(5);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 01")), 0);
}

TEST_F(FrameLayer, SizeMustEqualTheStatedLength)
{
    expectReplyFor(0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 03 00 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 01 00 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 01 02 00 00")), 0);
}

TEST_F(FrameLayer, ReplyWithoutAWholeStatusIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(validity(QByteArray()), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 01 00")), 0);
}

TEST_F(FrameLayer, NullReplyIsInvalid)
{
    expectReplyFor(0);
    EXPECT_EQ(CheckGetData(nullptr, 0), 0);
    EXPECT_EQ(CheckGetData(nullptr, 8), 0);
}

TEST_F(FrameLayer, EmptyQueueMakesEveryReplyInvalid)
{
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 00")), 0);
    EXPECT_EQ(validity(hex("BB BB 00 00 00 02 00 01")), 0);
}

TEST_F(FrameLayer, MagicAndHighHalfOfTheLengthAreNotLookedAt)
{
    expectReplyFor(0);
    EXPECT_EQ(validity(hex("BB BB 12 34 00 02 00 00")), 1);
    EXPECT_EQ(validity(hex("00 41 00 00 00 02 00 00")), 1);
}

TEST_F(FrameLayer, SizeArgumentIsIgnored)
{
    expectReplyFor(0);
    const QByteArray reply = hex("BB BB 00 00 00 02 00 00");
    for (int size : {0, 7, 9, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(CheckGetData(&reply, size), 1) << "size " << size;
}

TEST_F(FrameLayer, EveryTruncationOfAReplyIsInvalid)
{
    expectReplyFor(0);
    const QByteArray whole = uniformReadReply(3, 4);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_EQ(validity(whole.left(size)), 0) << size << " bytes";
}

TEST_F(FrameLayer, ChecksChangeNothing)
{
    expectReplyFor(0);
    QByteArray reply = hex("BB BB 00 00 00 02 00 00");
    infinite_length_data_reception(&reply);
    CheckGetData(&reply, 8);
    EXPECT_EQ(reply, hex("BB BB 00 00 00 02 00 00"));
    ASSERT_EQ(PLC_driver.requestQueue.size(), 1);
    EXPECT_EQ(PLC_driver.requestQueue.first().replyLength, -1);
    EXPECT_EQ(PLC_driver.reply.result, 0);
    EXPECT_TRUE(PLC_driver.localImage.isEmpty());
    EXPECT_EQ(settings.frameIndex, 0);
}

} // namespace
} // namespace test
} // namespace plc
