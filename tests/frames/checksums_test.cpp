#include "frames/checksums.h"

#include <climits>

#include "support/driver_fixture.h"

namespace plc {
namespace test {
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
    EXPECT_EQ(over(CalSUM, hex("01 02 03")), 6);
    EXPECT_EQ(over(CalSUM, hex("FF")), 255);
    EXPECT_EQ(over(CalSUM, hex("80 80")), 256);
    EXPECT_EQ(over(CalSUM, hex("BB BB 00 00 00 0E")), 0x184);
}

TEST(CalSum, IsReducedModulo65536)
{
    EXPECT_EQ(over(CalSUM, QByteArray(257, '\xFF')), 65535);
    EXPECT_EQ(over(CalSUM, QByteArray(257, '\xFF') + hex("01")), 0);
    EXPECT_EQ(over(CalSUM, QByteArray(300, '\xFF')), 10964);   // 76500 - 65536
    EXPECT_EQ(over(CalSUM, QByteArray(65535, '\xFF')), 65281); // 16711425 - 254 * 65536
}

TEST(CalSum, OfNoBytesIsZero)
{
    EXPECT_EQ(over(CalSUM, QByteArray()), 0);
    EXPECT_EQ(CalSUM(nullptr, 0), 0);
    EXPECT_EQ(CalSUM(nullptr, 5), 0);
}

TEST(CalCrc, HasThePublishedCheckValue)
{
    EXPECT_EQ(over(CalCRC, QByteArray("123456789")), 0x31C3);
}

TEST(CalCrc, OfSingleBytes)
{
    EXPECT_EQ(over(CalCRC, hex("00")), 0x0000);
    EXPECT_EQ(over(CalCRC, hex("01")), 0x1021);
    EXPECT_EQ(over(CalCRC, hex("02")), 0x2042);
    EXPECT_EQ(over(CalCRC, hex("10")), 0x1231);
    EXPECT_EQ(over(CalCRC, hex("80")), 0x9188);
    EXPECT_EQ(over(CalCRC, hex("FF")), 0x1EF0);
    EXPECT_EQ(over(CalCRC, QByteArray("A")), 0x58E5);
}

TEST(CalCrc, CarriesTheRegisterFromByteToByte)
{
    // 0x1021 after the first byte: 0x2100 of it stays, 0x10 gives 0x1231.
    EXPECT_EQ(over(CalCRC, hex("01 00")), 0x3331);
}

TEST(CalCrc, OverDataAndItsOwnCrcIsZero)
{
    EXPECT_EQ(over(CalCRC, QByteArray("123456789") + hex("31 C3")), 0);
}

TEST(CalCrc, OfNoBytesIsZero)
{
    EXPECT_EQ(over(CalCRC, QByteArray()), 0);
    EXPECT_EQ(CalCRC(nullptr, 0), 0);
    EXPECT_EQ(CalCRC(nullptr, 5), 0);
}

TEST(CalLrc, IsTheTwosComplementOfTheSum)
{
    EXPECT_EQ(over(CalLRC, hex("01")), 255);
    EXPECT_EQ(over(CalLRC, hex("FF")), 1);
    EXPECT_EQ(over(CalLRC, hex("01 02 03")), 250);
    EXPECT_EQ(over(CalLRC, hex("FF FF")), 2);
    EXPECT_EQ(over(CalLRC, QByteArray(65535, '\xFF')), 255); // 65535 * 255 ends in 0x01
}

TEST(CalLrc, OfASumThatEndsInZeroIs256)
{
    EXPECT_EQ(over(CalLRC, hex("00")), 256);
    EXPECT_EQ(over(CalLRC, hex("80 80")), 256);
    EXPECT_EQ(over(CalLRC, QByteArray(256, '\x01')), 256);
}

TEST(CalLrc, OfNoBytesIs256)
{
    EXPECT_EQ(over(CalLRC, QByteArray()), 256);
    EXPECT_EQ(CalLRC(nullptr, 0), 256);
    EXPECT_EQ(CalLRC(nullptr, 5), 256);
}

TEST(CalXor, CombinesAllBytes)
{
    EXPECT_EQ(over(CalXOR, hex("5A")), 0x5A);
    EXPECT_EQ(over(CalXOR, hex("5A A5")), 0xFF);
    EXPECT_EQ(over(CalXOR, hex("01 02 04 80")), 0x87);
    EXPECT_EQ(over(CalXOR, hex("33 33")), 0);
}

TEST(CalXor, ReadsTheFirstByteAlsoForLengthZero)
{
    ExactBytes one(hex("C7"));
    EXPECT_EQ(CalXOR(unsignedBytes(one), 0), 0xC7);
    EXPECT_EQ(CalXOR(unsignedBytes(one), 1), 0xC7);
    ExactBytes two(hex("C7 38"));
    EXPECT_EQ(CalXOR(unsignedBytes(two), 0), 0xC7);
    EXPECT_EQ(CalXOR(unsignedBytes(two), 1), 0xC7);
    EXPECT_EQ(CalXOR(unsignedBytes(two), 2), 0xFF);
}

TEST(CalXor, OverNullIsZero)
{
    EXPECT_EQ(CalXOR(nullptr, 0), 0);
    EXPECT_EQ(CalXOR(nullptr, 1), 0);
    EXPECT_EQ(CalXOR(nullptr, 65535), 0);
}

TEST(DigitalToAscii, MapsDigits)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(DigitalToASCII(value), digits[value]) << value;
}

TEST(DigitalToAscii, HasNoRangeCheck)
{
    EXPECT_EQ(DigitalToASCII(16), 'G');
    EXPECT_EQ(DigitalToASCII(35), 'Z');
    EXPECT_EQ(DigitalToASCII(1000), 1055);
    EXPECT_EQ(DigitalToASCII(-1), 0x2F);
    EXPECT_EQ(DigitalToASCII(-48), 0);
    EXPECT_EQ(DigitalToASCII(INT_MIN), INT_MIN + 0x30);
    EXPECT_EQ(DigitalToASCII(INT_MAX), INT_MIN + 0x36);
}

TEST(AsciiToDigital, MapsDigitsAndUpperCaseLetters)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(ASCIIToDigital(digits[value]), value) << digits[value];
}

TEST(AsciiToDigital, GoesOnBehindTheDigitsUpToQuestionMark)
{
    EXPECT_EQ(ASCIIToDigital(':'), 10);
    EXPECT_EQ(ASCIIToDigital('?'), 15);
}

TEST(AsciiToDigital, GivesZeroBelowTheDigitsAndForAt)
{
    EXPECT_EQ(ASCIIToDigital(0x2F), 0);
    EXPECT_EQ(ASCIIToDigital(0), 0);
    EXPECT_EQ(ASCIIToDigital(-5), 0);
    EXPECT_EQ(ASCIIToDigital(INT_MIN), 0);
    EXPECT_EQ(ASCIIToDigital(0x40), 0);
}

TEST(AsciiToDigital, DoesNotFoldLowerCase)
{
    EXPECT_EQ(ASCIIToDigital('G'), 16);
    EXPECT_EQ(ASCIIToDigital('a'), 42);
    EXPECT_EQ(ASCIIToDigital('f'), 47);
    EXPECT_EQ(ASCIIToDigital(INT_MAX), INT_MAX - 0x37);
}

} // namespace
} // namespace test
} // namespace plc
