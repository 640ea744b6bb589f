#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture_file.h"

namespace plc {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kReadRequest[] = "bbbb 00000014 2e00 00000001 0003 0000000a 00000002 0001 1234";
constexpr char kOtherReadRequest[] = "bbbb 00000014 2e00 00000001 0007 0000000e 00000002 0001 1234";
constexpr char kReadReply[] = "bbbb 00000009 0000 00000001 00 05dc";
constexpr char kOtherReadReply[] = "bbbb 00000009 0000 00000001 00 1234";

const QStringList kTwoPasses = {QStringLiteral("-2")};
const QStringList kPlcPort = {QStringLiteral("-o"), QStringLiteral("codesys_block.ports:1200")};

TEST(BlockDissector, ReplyInManyPacketsIsPutTogether)
{
    CaptureFile capture;
    capture.client("bbbb 00000014 2e00 00000001 0003 0000000a 00001388 0001 1234"); // 5000 bytes
    capture.server(QByteArray::fromHex("bbbb 0000138f 0000 00000001 00") + QByteArray(5000, 'x'));

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.length", "codesys_block.entry.value"},
                             filter("codesys_block.reply == 1")),
                ElementsAre(Row{"5", "5007", QByteArray(5000, 'x').toHex().toStdString()}));
}

TEST(BlockDissector, ReplyInManyPacketsKeepsItsRequest)
{
    CaptureFile capture;
    capture.client("bbbb 00000014 2e00 00000001 0003 0000000a 00001388 0001 1234");
    capture.server(QByteArray::fromHex("bbbb 0000138f 0000 00000001 00") + QByteArray(5000, 'x'));
    capture.client(kReadRequest);

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.request_in", "codesys_block.reply_in",
                              "codesys_block.expert.no_reply"},
                             kTwoPasses),
                ElementsAre(Row{"1", "", "5", ""}, Row{"5", "1", "", ""}, Row{"6", "", "", "1"}));
}

TEST(BlockDissector, FramesInSingleBytesArePutTogetherOnThePlcPort)
{
    CaptureFile capture;
    const QByteArray request = QByteArray::fromHex(kReadRequest);
    for (const char byte : request)
        capture.client(QByteArray(1, byte));
    const QByteArray reply = QByteArray::fromHex(kReadReply);
    for (const char byte : reply)
        capture.server(QByteArray(1, byte));

    EXPECT_THAT(
        capture.rows({"frame.number", "codesys_block.entry.address", "codesys_block.entry.value"},
                     kPlcPort + filter("codesys_block.length")),
        ElementsAre(Row{"26", "10", ""}, Row{"41", "10", "05dc"}));
}

TEST(BlockDissector, FramesInOnePacketAreTakenApart)
{
    CaptureFile capture;
    capture.client(QByteArray::fromHex(kReadRequest) + QByteArray::fromHex(kOtherReadRequest));
    capture.server(QByteArray::fromHex(kReadReply) + QByteArray::fromHex(kOtherReadReply));

    EXPECT_THAT(
        capture.rows({"codesys_block.entry.area", "codesys_block.entry.value", "_ws.col.Info"}),
        ElementsAre(Row{"3,7", "", "Read 1 entry, 2 bytes; Read 1 entry, 2 bytes"},
                    Row{"3,7", "05dc,1234", "Read reply, 2 bytes; Read reply, 2 bytes"}));
}

TEST(BlockDissector, RepliesAnswerRequestsInTheirOrder)
{
    CaptureFile capture;
    capture.client(kReadRequest).client(kOtherReadRequest);
    capture.server(kReadReply).server(kOtherReadReply);

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.entry.area",
                              "codesys_block.request_in", "codesys_block.reply_in"},
                             kTwoPasses),
                ElementsAre(Row{"1", "3", "", "3"}, Row{"2", "7", "", "4"}, Row{"3", "3", "1", ""},
                            Row{"4", "7", "2", ""}));
}

TEST(BlockDissector, RequestAheadOfAnAnswerIsFlagged)
{
    CaptureFile capture;
    capture.client(kReadRequest).client(kOtherReadRequest);
    capture.server(kReadReply).server(kOtherReadReply);
    capture.client(kReadRequest);

    EXPECT_THAT(capture.rows({"frame.number"}, filter("codesys_block.expert.early")),
                ElementsAre(Row{"2"}));
}

TEST(BlockDissector, ConnectionsKeepTheirRequestsApart)
{
    CaptureFile capture;
    capture.client(kReadRequest);
    capture.useSecondConnection();
    capture.client(kOtherReadRequest).server(kOtherReadReply);
    capture.useFirstConnection();
    capture.server(kReadReply);

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.entry.area",
                              "codesys_block.request_in", "codesys_block.expert.early"}),
                ElementsAre(Row{"1", "3", "", ""}, Row{"2", "7", "", ""}, Row{"3", "7", "2", ""},
                            Row{"4", "3", "1", ""}));
}

TEST(BlockDissector, UnansweredRequestIsFlagged)
{
    CaptureFile capture;
    capture.client(kReadRequest).server(kReadReply).client(kOtherReadRequest);

    EXPECT_THAT(
        capture.rows({"frame.number"}, kTwoPasses + filter("codesys_block.expert.no_reply")),
        ElementsAre(Row{"3"}));
}

TEST(BlockDissector, ReplyWithoutRequestIsFlaggedAndNotGuessedAt)
{
    CaptureFile capture;
    capture.client(kReadRequest).server(kReadReply).server(kReadReply);

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.entry.value", "codesys_block.data",
                              "_ws.col.Info"},
                             filter("codesys_block.expert.no_request")),
                ElementsAre(Row{"3", "", "000000010005dc", "Unknown reply"}));
}

TEST(BlockDissector, CaptureThatBeginsWithAReplyKnowsItsClient)
{
    CaptureFile capture;
    capture.server(kReadReply).client(kReadRequest).server(kOtherReadReply);

    EXPECT_THAT(capture.rows({"codesys_block.reply", "codesys_block.entry.value"}),
                ElementsAre(Row{"1", ""}, Row{"0", ""}, Row{"1", "1234"}));
}

TEST(BlockDissector, PortTellsRequestsOfUnknownServiceFromReplies)
{
    CaptureFile capture;
    capture.client("bbbb 00000002 5500");

    EXPECT_THAT(capture.rows({"codesys_block.reply"}), ElementsAre(Row{"1"}));
    EXPECT_THAT(capture.rows({"codesys_block.reply"}, kPlcPort), ElementsAre(Row{"0"}));
}

TEST(BlockDissector, RangeOfPortsIsAccepted)
{
    CaptureFile capture;
    capture.client("bbbb 00000002 5500");

    EXPECT_THAT(
        capture.rows({"codesys_block.reply"},
                     {QStringLiteral("-o"), QStringLiteral("codesys_block.ports:77,1100-1201")}),
        ElementsAre(Row{"0"}));
}

TEST(BlockDissector, OtherProtocolsAreLeftAlone)
{
    CaptureFile capture;
    capture.client("bbba 00000002 0100")
        .client("bbbb 01000002 0100")
        .client("bb")
        .client("47455420");

    EXPECT_THAT(capture.rows({"frame.number"}), IsEmpty());
}

TEST(BlockDissector, FramesBehindRubbishAreFound)
{
    CaptureFile capture;
    capture.client(kReadRequest);
    capture.server(QByteArray::fromHex("0102030405060708") + QByteArray::fromHex(kReadReply));

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.data", "codesys_block.entry.value"},
                             filter("codesys_block.expert.no_magic")),
                ElementsAre(Row{"2", "0102030405060708,00000001", "05dc"}));
}

TEST(BlockDissector, RubbishDoesNotSwallowTheNextPacket)
{
    CaptureFile capture;
    capture.client(kReadRequest).server("010203040506070809").server(kReadReply);

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.entry.value"},
                             filter("codesys_block.reply == 1")),
                ElementsAre(Row{"3", "05dc"}));
}

} // namespace
} // namespace plc
