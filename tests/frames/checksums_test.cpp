#include "frames/checksums.h"

#include <climits>

#include "support/driver_fixture.h"

namespace plc::test {
namespace {

unsigned char* unsignedBytes(ExactBytes& bytes)
{
    // The helpers take bytes that they only read as changeable ones.
    return reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.get()->constData()));
}

template <typename Result>
Result over(Result (*helper)(unsigned char*, unsigned short), const QByteArray& data)
{
    ExactBytes bytes(data);
    return helper(unsignedBytes(bytes), static_cast<unsigned short>(bytes.size()));
}

TEST(CalSum, AddsUnsignedBytes)
{
    EXPECT_EQ(6, over(CalSUM, hex("01 02 03")));
    EXPECT_EQ(255, over(CalSUM, hex("FF")));
    EXPECT_EQ(256, over(CalSUM, hex("80 80")));
    EXPECT_EQ(0x184, over(CalSUM, hex("BB BB 00 00 00 0E")));
}

TEST(CalSum, IsReducedModulo65536)
{
    EXPECT_EQ(65535, over(CalSUM, QByteArray(257, '\xFF')));
    EXPECT_EQ(0, over(CalSUM, QByteArray(257, '\xFF') + hex("01")));
    EXPECT_EQ(10964, over(CalSUM, QByteArray(300, '\xFF')));   // 76500 - 65536
    EXPECT_EQ(65281, over(CalSUM, QByteArray(65535, '\xFF'))); // 16711425 - 254 * 65536
}

TEST(CalSum, OfNoBytesIsZero)
{
    EXPECT_EQ(0, over(CalSUM, QByteArray()));
    EXPECT_EQ(0, CalSUM(nullptr, 0));
    EXPECT_EQ(0, CalSUM(nullptr, 5));
}

TEST(CalCrc, HasThePublishedCheckValue)
{
    EXPECT_EQ(0x31C3, over(CalCRC, QByteArray("123456789")));
}

TEST(CalCrc, OfSingleBytes)
{
    EXPECT_EQ(0x0000, over(CalCRC, hex("00")));
    EXPECT_EQ(0x1021, over(CalCRC, hex("01")));
    EXPECT_EQ(0x2042, over(CalCRC, hex("02")));
    EXPECT_EQ(0x1231, over(CalCRC, hex("10")));
    EXPECT_EQ(0x9188, over(CalCRC, hex("80")));
    EXPECT_EQ(0x1EF0, over(CalCRC, hex("FF")));
    EXPECT_EQ(0x58E5, over(CalCRC, QByteArray("A")));
}

TEST(CalCrc, CarriesTheRegisterFromByteToByte)
{
    // 0x1021 after the first byte: 0x2100 of it stays, 0x10 gives 0x1231.
    EXPECT_EQ(0x3331, over(CalCRC, hex("01 00")));
}

TEST(CalCrc, OverDataAndItsOwnCrcIsZero)
{
    EXPECT_EQ(0, over(CalCRC, QByteArray("123456789") + hex("31 C3")));
}

TEST(CalCrc, OfNoBytesIsZero)
{
    EXPECT_EQ(0, over(CalCRC, QByteArray()));
    EXPECT_EQ(0, CalCRC(nullptr, 0));
    EXPECT_EQ(0, CalCRC(nullptr, 5));
}

TEST(CalLrc, IsTheTwosComplementOfTheSum)
{
    EXPECT_EQ(255, over(CalLRC, hex("01")));
    EXPECT_EQ(1, over(CalLRC, hex("FF")));
    EXPECT_EQ(250, over(CalLRC, hex("01 02 03")));
    EXPECT_EQ(2, over(CalLRC, hex("FF FF")));
    EXPECT_EQ(255, over(CalLRC, QByteArray(65535, '\xFF'))); // 65535 * 255 ends in 0x01
}

TEST(CalLrc, OfASumThatEndsInZeroIs256)
{
    EXPECT_EQ(256, over(CalLRC, hex("00")));
    EXPECT_EQ(256, over(CalLRC, hex("80 80")));
    EXPECT_EQ(256, over(CalLRC, QByteArray(256, '\x01')));
}

TEST(CalLrc, OfNoBytesIs256)
{
    EXPECT_EQ(256, over(CalLRC, QByteArray()));
    EXPECT_EQ(256, CalLRC(nullptr, 0));
    EXPECT_EQ(256, CalLRC(nullptr, 5));
}

TEST(CalXor, CombinesAllBytes)
{
    EXPECT_EQ(0x5A, over(CalXOR, hex("5A")));
    EXPECT_EQ(0xFF, over(CalXOR, hex("5A A5")));
    EXPECT_EQ(0x87, over(CalXOR, hex("01 02 04 80")));
    EXPECT_EQ(0, over(CalXOR, hex("33 33")));
}

TEST(CalXor, ReadsTheFirstByteAlsoForLengthZero)
{
    ExactBytes one(hex("C7"));
    EXPECT_EQ(0xC7, CalXOR(unsignedBytes(one), 0));
    EXPECT_EQ(0xC7, CalXOR(unsignedBytes(one), 1));
    ExactBytes two(hex("C7 38"));
    EXPECT_EQ(0xC7, CalXOR(unsignedBytes(two), 0));
    EXPECT_EQ(0xC7, CalXOR(unsignedBytes(two), 1));
    EXPECT_EQ(0xFF, CalXOR(unsignedBytes(two), 2));
}

TEST(CalXor, OverNullIsZero)
{
    EXPECT_EQ(0, CalXOR(nullptr, 0));
    EXPECT_EQ(0, CalXOR(nullptr, 1));
    EXPECT_EQ(0, CalXOR(nullptr, 65535));
}

TEST(DigitalToAscii, MapsDigits)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(DigitalToASCII(value), digits[value]) << value;
}

TEST(DigitalToAscii, HasNoRangeCheck)
{
    EXPECT_EQ('G', DigitalToASCII(16));
    EXPECT_EQ('Z', DigitalToASCII(35));
    EXPECT_EQ(1055, DigitalToASCII(1000));
    EXPECT_EQ(0x2F, DigitalToASCII(-1));
    EXPECT_EQ(0, DigitalToASCII(-48));
    EXPECT_EQ(INT_MIN + 0x30, DigitalToASCII(INT_MIN));
    EXPECT_EQ(INT_MIN + 0x36, DigitalToASCII(INT_MAX));
}

TEST(AsciiToDigital, MapsDigitsAndUpperCaseLetters)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(ASCIIToDigital(digits[value]), value) << digits[value];
}

TEST(AsciiToDigital, GoesOnBehindTheDigitsUpToQuestionMark)
{
    EXPECT_EQ(10, ASCIIToDigital(':'));
    EXPECT_EQ(15, ASCIIToDigital('?'));
}

TEST(AsciiToDigital, GivesZeroBelowTheDigitsAndForAt)
{
    EXPECT_EQ(0, ASCIIToDigital(0x2F));
    EXPECT_EQ(0, ASCIIToDigital(0));
    EXPECT_EQ(0, ASCIIToDigital(-5));
    EXPECT_EQ(0, ASCIIToDigital(INT_MIN));
    EXPECT_EQ(0, ASCIIToDigital(0x40));
}

TEST(AsciiToDigital, DoesNotFoldLowerCase)
{
    EXPECT_EQ(16, ASCIIToDigital('G'));
    EXPECT_EQ(42, ASCIIToDigital('a'));
    EXPECT_EQ(47, ASCIIToDigital('f'));
    EXPECT_EQ(INT_MAX - 0x37, ASCIIToDigital(INT_MAX));
}

} // namespace
} // namespace plc::test
