#include "lists/length_conversion.h"

#include <climits>

#include "support/symbol_fixture.h"

namespace plc::test {
namespace {

struct Range {
    int dataType;
    int address;
    int length;

    friend bool operator==(const Range& a, const Range& b)
    {
        return a.dataType == b.dataType && a.address == b.address && a.length == b.length;
    }
    friend std::ostream& operator<<(std::ostream& out, const Range& range)
    {
        return out << "type " << range.dataType << ", address " << range.address << ", length "
                   << range.length;
    }
};

Range converted(int code, int address, int count, TextCount textCount)
{
    const ControlInformationM place = {quint8(code), address, 3};
    ReadRange range = {-1, -1, -1};
    EXPECT_TRUE(toReadRange(place, count, textCount, range)) << "code " << code;
    return Range{range.dataType, range.address, range.length};
}

int lengthOf(int code, int count, TextCount textCount = TextCount::Bytes)
{
    const Range range = converted(code, 1000, count, textCount);
    EXPECT_EQ(code, range.dataType);
    EXPECT_EQ(1000, range.address);
    return range.length;
}

TEST(LengthConversion, OneByteTypesTakeOneByteEach)
{
    for (int code : {1, 2, 14, 15}) {
        for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
            EXPECT_EQ(0, lengthOf(code, 0, textCount)) << code;
            EXPECT_EQ(1, lengthOf(code, 1, textCount)) << code;
            EXPECT_EQ(7, lengthOf(code, 7, textCount)) << code;
            EXPECT_EQ(-7, lengthOf(code, -7, textCount)) << code;
            EXPECT_EQ(INT_MAX, lengthOf(code, INT_MAX, textCount)) << code;
            EXPECT_EQ(INT_MIN, lengthOf(code, INT_MIN, textCount)) << code;
        }
    }
}

TEST(LengthConversion, TwoByteTypesTakeTwoBytesEach)
{
    for (int code : {3, 4, 16}) {
        for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
            EXPECT_EQ(0, lengthOf(code, 0, textCount)) << code;
            EXPECT_EQ(2, lengthOf(code, 1, textCount)) << code;
            EXPECT_EQ(600, lengthOf(code, 300, textCount)) << code;
            EXPECT_EQ(-6, lengthOf(code, -3, textCount)) << code;
        }
    }
}

TEST(LengthConversion, FourByteTypesCountPairsOfRegistersRoundedUp)
{
    for (int code : {5, 6, 7, 17}) {
        for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
            EXPECT_EQ(0, lengthOf(code, 0, textCount)) << code;
            EXPECT_EQ(4, lengthOf(code, 1, textCount)) << code;
            EXPECT_EQ(4, lengthOf(code, 2, textCount)) << code;
            EXPECT_EQ(8, lengthOf(code, 3, textCount)) << code;
            EXPECT_EQ(200, lengthOf(code, 100, textCount)) << code;
            // Divisions drop the remainder: (-1 + 1) / 2, (-2 + 1) / 2, (-3 + 1) / 2
            EXPECT_EQ(0, lengthOf(code, -1, textCount)) << code;
            EXPECT_EQ(0, lengthOf(code, -2, textCount)) << code;
            EXPECT_EQ(-4, lengthOf(code, -3, textCount)) << code;
        }
    }
}

TEST(LengthConversion, EightByteTypesCountFoursOfRegistersRoundedUp)
{
    for (int code : {8, 9}) {
        for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
            EXPECT_EQ(0, lengthOf(code, 0, textCount)) << code;
            EXPECT_EQ(8, lengthOf(code, 1, textCount)) << code;
            EXPECT_EQ(8, lengthOf(code, 4, textCount)) << code;
            EXPECT_EQ(16, lengthOf(code, 5, textCount)) << code;
            EXPECT_EQ(200, lengthOf(code, 100, textCount)) << code;
            // (-3 + 3) / 4, (-6 + 3) / 4, (-7 + 3) / 4
            EXPECT_EQ(0, lengthOf(code, -3, textCount)) << code;
            EXPECT_EQ(0, lengthOf(code, -6, textCount)) << code;
            EXPECT_EQ(-8, lengthOf(code, -7, textCount)) << code;
        }
    }
}

TEST(LengthConversion, TextCountsRegistersForOneShotReadsAndBytesForCyclicOnes)
{
    for (int code : {10, 11}) {
        EXPECT_EQ(2, lengthOf(code, 1, TextCount::Registers)) << code;
        EXPECT_EQ(1, lengthOf(code, 1, TextCount::Bytes)) << code;
        EXPECT_EQ(160, lengthOf(code, 80, TextCount::Registers)) << code;
        EXPECT_EQ(80, lengthOf(code, 80, TextCount::Bytes)) << code;
        EXPECT_EQ(0, lengthOf(code, 0, TextCount::Registers)) << code;
        EXPECT_EQ(-4, lengthOf(code, -2, TextCount::Registers)) << code;
        EXPECT_EQ(-2, lengthOf(code, -2, TextCount::Bytes)) << code;
    }
}

TEST(LengthConversion, BitsBecomeTheWordsThatHoldThem)
{
    for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
        // (3 + 20 + 15) / 16 * 2
        EXPECT_EQ((Range{16, 2, 4}), converted(13, 35, 20, textCount));
        EXPECT_EQ((Range{16, 0, 2}), converted(13, 0, 1, textCount));
        EXPECT_EQ((Range{16, 0, 2}), converted(13, 0, 16, textCount));
        EXPECT_EQ((Range{16, 0, 4}), converted(13, 0, 17, textCount));
        EXPECT_EQ((Range{16, 0, 2}), converted(13, 15, 1, textCount));
        EXPECT_EQ((Range{16, 0, 4}), converted(13, 15, 2, textCount));
        EXPECT_EQ((Range{16, 1, 2}), converted(13, 16, 1, textCount));
    }
}

TEST(LengthConversion, NoBitsStillCountTheOffsetWithinTheWord)
{
    // (0 + 0 + 15) / 16 * 2 and (1 + 0 + 15) / 16 * 2
    EXPECT_EQ((Range{16, 2, 0}), converted(13, 32, 0, TextCount::Bytes));
    EXPECT_EQ((Range{16, 2, 2}), converted(13, 33, 0, TextCount::Bytes));
    // (0 - 31 + 15) / 16 * 2
    EXPECT_EQ((Range{16, 2, -2}), converted(13, 32, -31, TextCount::Bytes));
    EXPECT_EQ((Range{16, 2, 0}), converted(13, 32, -30, TextCount::Bytes));
}

TEST(LengthConversion, RemainderOfANegativeBitAddressIsNegative)
{
    // -35 = -2 * 16 - 3: (-3 + 20 + 15) / 16 * 2
    EXPECT_EQ((Range{16, -2, 4}), converted(13, -35, 20, TextCount::Bytes));
    // (-5 + 20 + 15) / 16 * 2
    EXPECT_EQ((Range{16, 0, 2}), converted(13, -5, 20, TextCount::Bytes));
    EXPECT_EQ((Range{16, 0, 2}), converted(13, -15, 16, TextCount::Bytes));
    EXPECT_EQ((Range{16, 0, 0}), converted(13, -15, 15, TextCount::Bytes));
    EXPECT_EQ((Range{16, -134217728, 2}), converted(13, INT_MIN, 1, TextCount::Bytes));
}

TEST(LengthConversion, ExactLengthsAreReducedTo32BitsOnlyWhenTheyAreStored)
{
    EXPECT_EQ(-2, lengthOf(3, INT_MAX));                         // 4294967294
    EXPECT_EQ(INT_MIN, lengthOf(3, 1 << 30));                    // 2147483648
    EXPECT_EQ(-1294967296, lengthOf(16, 1500000000));            // 3000000000
    EXPECT_EQ(0, lengthOf(4, INT_MIN));                          // -4294967296
    EXPECT_EQ(2, lengthOf(4, INT_MIN + 1));                      // -4294967294
    EXPECT_EQ(-2, lengthOf(10, INT_MAX, TextCount::Registers));  // 4294967294
    EXPECT_EQ(INT_MAX, lengthOf(10, INT_MAX, TextCount::Bytes)); // 2147483647
    EXPECT_EQ(0, lengthOf(5, INT_MAX));                          // 1073741824 * 4
    EXPECT_EQ(-4, lengthOf(5, INT_MAX - 1));                     // 1073741823 * 4
    EXPECT_EQ(4, lengthOf(5, INT_MIN));                          // -1073741823 * 4
    EXPECT_EQ(0, lengthOf(8, INT_MAX));                          // 536870912 * 8
    EXPECT_EQ(-8, lengthOf(8, INT_MAX - 3));                     // 536870911 * 8
    EXPECT_EQ(8, lengthOf(8, INT_MIN));                          // -536870911 * 8
    // (15 + 2147483647 + 15) / 16 * 2
    EXPECT_EQ((Range{16, 134217727, 268435458}), converted(13, INT_MAX, INT_MAX, TextCount::Bytes));
    // (-15 - 2147483648 + 15) / 16 * 2
    EXPECT_EQ((Range{16, -1, -268435456}), converted(13, -31, INT_MIN, TextCount::Bytes));
}

TEST(LengthConversion, CodesThatCannotBeReadAreRefused)
{
    for (int code = 0; code < 256; ++code) {
        const bool readable = code >= 1 && code <= 17 && code != 12;
        const ControlInformationM place = {quint8(code), 1000, 3};
        for (TextCount textCount : {TextCount::Registers, TextCount::Bytes}) {
            ReadRange range = {-1, -1, -1};
            EXPECT_EQ(readable, toReadRange(place, 4, textCount, range)) << "code " << code;
        }
    }
}

TEST(LengthConversion, EqualsThePlainFormulasForAllSmallCounts)
{
    for (int count = -70; count <= 70; ++count) {
        ASSERT_EQ(count * 2, lengthOf(3, count));
        ASSERT_EQ((count + 1) / 2 * 4, lengthOf(17, count));
        ASSERT_EQ((count + 3) / 4 * 8, lengthOf(9, count));
        for (int address = -40; address <= 40; ++address) {
            const Range expected = {16, address / 16, (address % 16 + count + 15) / 16 * 2};
            ASSERT_EQ(expected, converted(13, address, count, TextCount::Registers));
        }
    }
}

} // namespace
} // namespace plc::test
