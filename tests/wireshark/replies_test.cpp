#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture_file.h"

namespace plc {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr char kTwoEntriesRequest[] =
    "bbbb 0000001e 2e00 00000002 0003 0000000a 00000002 0004 00000064 00000004 0001 1234";
constexpr char kTwoEntriesReply[] = "bbbb 0000000e 0000 00000002 00 05dc 00 42c80000";
constexpr char kWriteRequest[] =
    "bbbb 00000016 3c00 00000001 0003 00000010 00000002 abcd 0001 1234";

const QStringList kRepliesOnly = filter("codesys_block.reply == 1");

TEST(BlockDissector, ReadReplyShowsValuesAtThePlacesOfTheRequest)
{
    CaptureFile capture;
    capture.client(kTwoEntriesRequest).server(kTwoEntriesReply);

    EXPECT_THAT(
        capture.rows({"codesys_block.service", "codesys_block.status", "codesys_block.entry.area",
                      "codesys_block.entry.address", "codesys_block.entry.length",
                      "codesys_block.entry.lead", "codesys_block.entry.value", "codesys_block.data",
                      "_ws.col.Info", "_ws.expert"},
                     kRepliesOnly),
        ElementsAre(Row{"0x2e", "0x0000", "3,4", "10,100", "2,4", "0x00,0x00", "05dc,42c80000",
                        "00000002", "Read reply, 6 bytes", ""}));
    EXPECT_THAT(capture.details(),
                HasSubstr("Entry 1: area 4, address 100 (0x00000064), 4 bytes: 42c80000\n"));
}

TEST(BlockDissector, ValuesAreFoundByAreaAndAddress)
{
    CaptureFile capture;
    capture.client(kTwoEntriesRequest).server(kTwoEntriesReply);
    capture.client(kWriteRequest).server("bbbb 00000002 0000");

    EXPECT_THAT(capture.rows({"frame.number"}, filter("codesys_block.entry.area == 4 && "
                                                      "codesys_block.entry.address == 0x64 && "
                                                      "codesys_block.entry.value == 42:c8:00:00")),
                ElementsAre(Row{"2"}));
}

TEST(BlockDissector, RequestAndReplyPointAtEachOther)
{
    CaptureFile capture;
    capture.login();
    capture.client(kTwoEntriesRequest).server(kTwoEntriesReply);
    capture.client(kWriteRequest).server("bbbb 00000002 0000");

    EXPECT_THAT(
        capture.rows({"frame.number", "codesys_block.service", "codesys_block.reply_in",
                      "codesys_block.request_in"},
                     {QStringLiteral("-2")}),
        ElementsAre(Row{"1", "0x01", "2", ""}, Row{"2", "0x01", "", "1"}, Row{"3", "0x31", "4", ""},
                    Row{"4", "0x31", "", "3"}, Row{"5", "0x2e", "6", ""}, Row{"6", "0x2e", "", "5"},
                    Row{"7", "0x3c", "8", ""}, Row{"8", "0x3c", "", "7"}));
}

TEST(BlockDissector, ReplyShowsTheTimeSinceItsRequest)
{
    CaptureFile capture;
    capture.client(kWriteRequest);
    capture.wait(std::chrono::nanoseconds(249000001)); // and the millisecond of every packet
    capture.server("bbbb 00000002 0000");

    EXPECT_THAT(capture.rows({"codesys_block.time"}, kRepliesOnly),
                ElementsAre(Row{"0.250000001"}));
    EXPECT_THAT(capture.rows({"frame.number"}, filter("codesys_block.time > 0.25")),
                ElementsAre(Row{"2"}));
}

TEST(BlockDissector, LoginReplyShowsTheInfoBytes)
{
    CaptureFile capture;
    capture.login();

    EXPECT_THAT(
        capture.rows({"codesys_block.info1", "codesys_block.info2", "_ws.col.Info", "_ws.expert"},
                     kRepliesOnly),
        ElementsAre(Row{"", "", "Identification reply", ""},
                    Row{"0x12", "0x34", "File request reply", ""}));
}

TEST(BlockDissector, LoginRepliesBelowTheSmallestSizeAreFlagged)
{
    CaptureFile capture;
    capture.client("bbbb 0000000e 0100 000002000000060000000000");
    capture.server(replyOf(199));
    capture.client("bbbb 00000011 3100 000d 444f574e4c4f41442e53444200");
    capture.server(replyOf(29));

    EXPECT_THAT(capture.rows({"frame.number", "_ws.col.Info"},
                             filter("codesys_block.expert.login_refused")),
                ElementsAre(Row{"2", "Identification refused, the reply is too short"},
                            Row{"4", "File request refused, the reply is too short"}));
}

TEST(BlockDissector, RefusalIsAnError)
{
    CaptureFile capture;
    capture.login();
    capture.client(kTwoEntriesRequest).server("bbbb 00000002 0031");

    EXPECT_THAT(capture.rows({"codesys_block.status", "_ws.expert.message", "_ws.expert.severity",
                              "_ws.col.Info"},
                             filter("codesys_block.expert.refused")),
                ElementsAre(Row{"0x0031", "Read refused, status 0x0031", "8388608",
                                "Read refused, status 0x0031"}));
}

TEST(BlockDissector, ReadReplyThatEndsEarlyIsFlagged)
{
    CaptureFile capture;
    capture.client(kTwoEntriesRequest).server("bbbb 0000000d 0000 00000002 00 05dc 00 42c800");

    EXPECT_THAT(capture.rows({"codesys_block.entry.value", "codesys_block.data"},
                             filter("codesys_block.expert.length")),
                ElementsAre(Row{"05dc", "00000002,0042c800"}));
    EXPECT_THAT(capture.details(), HasSubstr("The reply ends within the block of entry 1"));
}

TEST(BlockDissector, ReadReplyThatGoesOnIsFlagged)
{
    CaptureFile capture;
    capture.client(kTwoEntriesRequest)
        .server("bbbb 00000010 0000 00000002 00 05dc 00 42c80000 0102");

    EXPECT_THAT(capture.rows({"codesys_block.entry.value", "codesys_block.data"},
                             filter("codesys_block.expert.length")),
                ElementsAre(Row{"05dc,42c80000", "00000002,0102"}));
    EXPECT_THAT(capture.details(), HasSubstr("2 bytes behind the block of the last entry"));
}

TEST(BlockDissector, ReadReplyBlocksCountTheLowHalfOfTheLength)
{
    CaptureFile capture;
    capture.client("bbbb 00000014 2e00 00000001 0003 0000000a 00010002 0001 1234");
    capture.server("bbbb 00000009 0000 00000001 00 05dc");

    EXPECT_THAT(
        capture.rows({"codesys_block.entry.length", "codesys_block.entry.value", "_ws.expert"},
                     kRepliesOnly),
        ElementsAre(Row{"65538", "05dc", ""}));
}

TEST(BlockDissector, EntryOfLengthZeroHasItsLeadingByteOnly)
{
    CaptureFile capture;
    capture.client("bbbb 00000014 2e00 00000001 0003 0000000a 00000000 0001 1234");
    capture.server("bbbb 00000007 0000 00000001 00");

    EXPECT_THAT(
        capture.rows({"codesys_block.entry.lead", "codesys_block.entry.value", "_ws.expert"},
                     kRepliesOnly),
        ElementsAre(Row{"0x00", "", ""}));
}

TEST(BlockDissector, FrameWithoutStatusIsFlagged)
{
    CaptureFile capture;
    capture.client(kTwoEntriesRequest).server("bbbb 00000000");

    EXPECT_THAT(capture.rows({"frame.number"}, filter("codesys_block.expert.length")),
                ElementsAre(Row{"2"}));
}

} // namespace
} // namespace plc
