#include "iec/direct_address.h"

#include <gtest/gtest.h>

#include "project/memory_layout.h"

namespace plc::iec {
namespace {

/// "area:byte.bit", the area only where there is one; what was expected behind ! on failure.
std::string parsed(const char* text)
{
    QString expected;
    const std::optional<DirectAddress> address =
        parseDirectAddress(QString::fromUtf8(text), &expected);
    if (!address)
        return "!" + expected.toStdString();
    if (address->place != DirectAddress::Memory)
        return address->place == DirectAddress::Open ? "open" : "process";
    return (address->area ? std::to_string(*address->area) + ":" : "") +
           std::to_string(address->byte) +
           (address->bit ? "." + std::to_string(*address->bit) : "");
}

TEST(DirectAddress, CountsInTheSizeOfItsLetter)
{
    EXPECT_EQ("100", parsed("%MB100"));
    EXPECT_EQ("200", parsed("%MW100"));
    EXPECT_EQ("400", parsed("%MD100"));
    EXPECT_EQ("800", parsed("%ML100"));
    EXPECT_EQ("200", parsed("%mw100"));
}

TEST(DirectAddress, NamesTheAreaFirst)
{
    EXPECT_EQ("1:200", parsed("%MW1.100"));
    EXPECT_EQ("0:7", parsed("%MB0.7"));
    EXPECT_EQ("65535:0", parsed("%MD65535.0"));
}

TEST(DirectAddress, OfABitNamesByteAndBit)
{
    EXPECT_EQ("12.3", parsed("%MX12.3"));
    EXPECT_EQ("12.3", parsed("%M12.3"));
    EXPECT_EQ("2:12.7", parsed("%MX2.12.7"));
    EXPECT_EQ("2:12.0", parsed("%M2.12.0"));
}

TEST(DirectAddress, MayLieElsewhere)
{
    EXPECT_EQ("process", parsed("%IX0.1"));
    EXPECT_EQ("process", parsed("%QW3"));
    EXPECT_EQ("open", parsed("%M*"));
    EXPECT_EQ("open", parsed("%I*"));
}

TEST(DirectAddress, RefusesWhatIsNoPlace)
{
    const std::string any = "!an address such as %MB100, %MW1.100 or %MX12.3";
    for (const char* text : {"%", "%M", "%MZ5", "%MW", "%MW1.", "%MW.1", "%MW-1", "%MWa", "%5",
                             "%MW1..2", "%KW5", "%MX"})
        EXPECT_EQ(any, parsed(text)) << text;
    const std::string bits = "!%MX<byte>.<bit> or %MX<area>.<byte>.<bit>, the bit from 0 to 7";
    for (const char* text : {"%MX5", "%MX5.8", "%M5", "%MX1.2.3.4"})
        EXPECT_EQ(bits, parsed(text)) << text;
    const std::string words = "!an address of one number or of two, as in %MW100 or %MW1.100";
    for (const char* text : {"%MW1.2.3", "%MW9999999999"})
        EXPECT_EQ(words, parsed(text)) << text;
    EXPECT_EQ("!an area from 0 to 65535", parsed("%MW65536.0"));
    EXPECT_EQ("!an area from 0 to 65535", parsed("%MX99999999999.0.1"));
    EXPECT_EQ("!a byte address of at most 2147483647", parsed("%MD536870912"));
    EXPECT_EQ("!a byte address of at most 2147483647", parsed("%MX9223372036854775807.1"));
}

TEST(BitOffset, LeadsToTheBitOfTheByte)
{
    // Byte 12 is the high byte of the word at 12: its bit 3 is bit 11 of that.
    EXPECT_EQ(16 * 12 + 11, bitOffset(12, 3));
    // Byte 13 is the low byte of the word at 12.
    EXPECT_EQ(16 * 12 + 3, bitOffset(13, 3));
    for (int byte = 0; byte < 4; ++byte) {
        for (int bit = 0; bit < 8; ++bit) {
            const project::BitPlace place = project::bitPlace(bitOffset(byte, bit));
            EXPECT_EQ(byte, place.byte);
            EXPECT_EQ(bit, place.bit);
        }
    }
}

} // namespace
} // namespace plc::iec
