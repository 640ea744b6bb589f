#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture_file.h"

namespace plc {
namespace {

using ::testing::ElementsAre;

TEST(BlockDissector, ReadRequestShowsItsEntries)
{
    CaptureFile capture;
    capture.client(
        "bbbb 0000001e 2e00 00000002"
        "0003 0000000a 00000002"
        "0004 00010064 00000004"
        "0001 12 34");

    EXPECT_THAT(
        capture.rows({"codesys_block.magic", "codesys_block.length", "codesys_block.service",
                      "codesys_block.reserved", "codesys_block.entries", "codesys_block.entry.area",
                      "codesys_block.entry.address", "codesys_block.entry.length",
                      "codesys_block.trailer", "codesys_block.info1", "codesys_block.info2",
                      "codesys_block.reply", "_ws.expert"}),
        ElementsAre(Row{"0xbbbb", "30", "0x2e", "0x00", "2", "3,4", "10,65636", "2,4", "0x0001",
                        "0x12", "0x34", "0", ""}));
}

TEST(BlockDissector, WriteRequestShowsItsValues)
{
    CaptureFile capture;
    capture.client(
        "bbbb 00000023 3c00 00000002"
        "0003 0000000a 00000002 04b0"
        "0005 00000011 00000003 0102ff"
        "0001 12 34");

    EXPECT_THAT(capture.rows({"codesys_block.service", "codesys_block.entries",
                              "codesys_block.entry.area", "codesys_block.entry.address",
                              "codesys_block.entry.length", "codesys_block.entry.value",
                              "codesys_block.entry.bit_address", "_ws.expert"}),
                ElementsAre(Row{"0x3c", "2", "3,5", "10,17", "2,3", "04b0,0102ff", "", ""}));
}

TEST(BlockDissector, BitWriteShowsBitAddressesAndOneByteEach)
{
    CaptureFile capture;
    capture.client(
        "bbbb 00000020 3c00 00000002"
        "0005 00000011 00000000 01"
        "0005 00000012 00000000 00"
        "0001 12 34");

    EXPECT_THAT(capture.rows({"codesys_block.entry.area", "codesys_block.entry.bit_address",
                              "codesys_block.entry.address", "codesys_block.entry.length",
                              "codesys_block.entry.value", "_ws.expert"}),
                ElementsAre(Row{"5,5", "17,18", "", "0,0", "01,00", ""}));
}

TEST(BlockDissector, WordBehindBitsIsFlaggedAsItsSizeIsNotSaid)
{
    CaptureFile capture;
    capture.client(
        "bbbb 00000021 3c00 00000002"
        "0005 00000011 00000000 01"
        "0003 0000000a 00000000 04b0"
        "0001 12 34");

    // Read as it states itself, the first entry has no value byte; the next then begins with 01.
    EXPECT_THAT(capture.rows({"codesys_block.entries", "codesys_block.entry.area",
                              "codesys_block.data", "codesys_block.expert.length"}),
                ElementsAre(Row{"2", "5", "0100030000000a0000000004b0", "1"}));
}

TEST(BlockDissector, WriteOfNothingHasNoBits)
{
    CaptureFile capture;
    capture.client(
        "bbbb 00000014 3c00 00000001"
        "0005 00000011 00000000"
        "0001 12 34");

    EXPECT_THAT(capture.rows({"codesys_block.entry.address", "codesys_block.entry.bit_address",
                              "_ws.expert"}),
                ElementsAre(Row{"17", "", ""}));
}

TEST(BlockDissector, LoginRequestsShowParametersAndFileName)
{
    CaptureFile capture;
    capture.client("bbbb 0000000e 0100 000002000000060000000000");
    capture.client("bbbb 00000011 3100 000d 444f574e4c4f41442e53444200");

    EXPECT_THAT(
        capture.rows({"codesys_block.service", "codesys_block.parameters",
                      "codesys_block.file_name_length", "codesys_block.file_name", "_ws.col.Info"}),
        ElementsAre(Row{"0x01", "000002000000060000000000", "", "", "Identification"},
                    Row{"0x31", "", "13", "DOWNLOAD.SDB", "File request DOWNLOAD.SDB"}));
}

TEST(BlockDissector, InfoColumnSumsUpTheRequest)
{
    CaptureFile capture;
    capture.client(
        "bbbb 0000001e 2e00 00000002 00030000000a00000002 00040000006400000004 00011234");
    capture.client("bbbb 00000015 3c00 00000001 00050000001100000000 01 00011234");

    EXPECT_THAT(capture.rows({"_ws.col.Protocol", "_ws.col.Info"}),
                ElementsAre(Row{"CODESYS", "Read 2 entries, 6 bytes"},
                            Row{"CODESYS", "Write 1 entry, 1 byte"}));
}

TEST(BlockDissector, DetailsNameAreaAddressAndValueOfAnEntry)
{
    CaptureFile capture;
    capture.client("bbbb 00000016 3c00 00000001 00030000001000000002 abcd 00011234");

    EXPECT_THAT(capture.details(),
                ::testing::HasSubstr("Entry 0: area 3, address 16 (0x00000010), 2 bytes: abcd\n"));
}

TEST(BlockDissector, EntriesThatDoNotFitTheFrameAreFlagged)
{
    CaptureFile capture;
    // three entries announced, one there, and half of another
    capture.client("bbbb 00000019 2e00 00000003 00030000000a00000002 0004000000 00011234");

    EXPECT_THAT(capture.rows({"codesys_block.entries", "codesys_block.entry.area",
                              "codesys_block.data", "codesys_block.expert.length"}),
                ElementsAre(Row{"3", "3", "0004000000", "1"}));
    EXPECT_THAT(capture.details(),
                ::testing::HasSubstr("3 entries announced, 1 of them fit, and 5 bytes remain"));
}

TEST(BlockDissector, ValueBeyondTheFrameIsFlagged)
{
    CaptureFile capture;
    capture.client("bbbb 00000016 3c00 00000001 0003 00000010 ffffffff abcd 00011234");

    EXPECT_THAT(capture.rows({"codesys_block.entry.area", "codesys_block.data",
                              "codesys_block.expert.length"}),
                ElementsAre(Row{"", "000300000010ffffffffabcd", "1"}));
}

TEST(BlockDissector, HugeEntryCountIsFlagged)
{
    CaptureFile capture;
    capture.client("bbbb 0000000a 2e00 ffffffff 00011234");

    EXPECT_THAT(capture.rows({"codesys_block.entries", "codesys_block.entry.area",
                              "codesys_block.expert.length"}),
                ElementsAre(Row{"4294967295", "", "1"}));
}

TEST(BlockDissector, RequestWithoutTrailerIsFlagged)
{
    CaptureFile capture;
    capture.client("bbbb 00000008 2e00 00000000 0001");

    EXPECT_THAT(capture.rows({"codesys_block.data", "codesys_block.expert.length"}),
                ElementsAre(Row{"000000000001", "1"}));
}

TEST(BlockDissector, UnknownServiceIsFlagged)
{
    CaptureFile capture;
    capture.login();
    capture.client("bbbb 00000004 5500 abcd");

    EXPECT_THAT(capture.rows({"codesys_block.service", "codesys_block.data", "_ws.col.Info"},
                             filter("codesys_block.expert.service")),
                ElementsAre(Row{"0x55", "abcd", "Unknown service 0x55"}));
}

TEST(BlockDissector, DifferentFixedBytesAreFlagged)
{
    CaptureFile capture;
    capture.client("bbbb 0000000a 2e00 00000000 00021234");
    capture.client("bbbb 0000000e 0100 000002000000060000000000");
    capture.client("bbbb 0000000a 3c07 00000000 00011234");

    EXPECT_THAT(capture.rows({"frame.number"}, filter("codesys_block.expert.fixed_byte")),
                ElementsAre(Row{"1"}, Row{"3"}));
}

TEST(BlockDissector, InfoBytesOfAnotherLoginAreFlagged)
{
    CaptureFile capture;
    capture.login();
    capture.client("bbbb 0000000a 2e00 00000000 00011234");
    capture.server("bbbb 00000006 0000 00000000");
    capture.client("bbbb 0000000a 2e00 00000000 00013412");

    EXPECT_THAT(capture.rows({"frame.number", "codesys_block.info1"},
                             filter("codesys_block.expert.info_bytes")),
                ElementsAre(Row{"7", "0x34"}));
}

TEST(BlockDissector, UsedHighHalfOfTheLengthIsFlagged)
{
    CaptureFile capture;
    capture.login();
    capture.client("bbbb 0001000a 2e00 00000000 00011234");
    capture.server("bbbb 00000006 0000 00000000");

    EXPECT_THAT(capture.rows(
                    {"codesys_block.length", "codesys_block.reply_in"},
                    filter("codesys_block.expert.high_length") + QStringList{QStringLiteral("-2")}),
                ElementsAre(Row{"65546", "6"}));
}

} // namespace
} // namespace plc
