#include "values/value_bits.h"

#include <gtest/gtest.h>

namespace plc::values {
namespace {

Value ofBits(const char* type, quint64 bits)
{
    return valueOfBits(*findIecType(QString::fromLatin1(type)), bits);
}

TEST(ValueBits, OfANegativeNumberFillAll64)
{
    EXPECT_EQ(Q_UINT64_C(0xFFFFFFFFFFFFFFFE), valueBits(qint64(-2)));
    EXPECT_EQ(Q_UINT64_C(0xFFFE), valueBits(quint64(0xFFFE)));
    EXPECT_EQ(1u, valueBits(true));
    EXPECT_EQ(0u, valueBits(QStringLiteral("1")));
}

TEST(ValueBits, OfARealAreThoseOfItsSize)
{
    // 1.5 is 1.1 in binary: exponent bias 127 and 1023, first bit of the fraction set.
    EXPECT_EQ(Q_UINT64_C(0x3FC00000), valueBits(1.5f));
    EXPECT_EQ(Q_UINT64_C(0x3FF8000000000000), valueBits(1.5));
    EXPECT_EQ(Value(1.5f), ofBits("REAL", 0x3FC00000));
    EXPECT_EQ(Value(1.5), ofBits("LREAL", Q_UINT64_C(0x3FF8000000000000)));
}

TEST(ValueBits, SignOfANumberIsItsHighestBit)
{
    EXPECT_EQ(Value(qint64(-128)), ofBits("SINT", 0x80));
    EXPECT_EQ(Value(qint64(127)), ofBits("SINT", 0x7F));
    EXPECT_EQ(Value(qint64(-2)), ofBits("INT", 0xFFFE));
    EXPECT_EQ(Value(qint64(-1)), ofBits("LINT", Q_UINT64_C(0xFFFFFFFFFFFFFFFF)));
    EXPECT_EQ(Value(quint64(0xFFFE)), ofBits("UINT", 0xFFFE));
}

TEST(ValueBits, AboveTheSizeOfTheTypeAreNotLookedAt)
{
    EXPECT_EQ(Value(quint64(0x34)), ofBits("BYTE", 0x1234));
    EXPECT_EQ(Value(qint64(0x34)), ofBits("SINT", 0x1234));
}

TEST(ValueBits, AnyBitMakesAFlagTrue)
{
    EXPECT_EQ(Value(true), ofBits("BOOL", 2));
    EXPECT_EQ(Value(false), ofBits("BOOL", 0));
    EXPECT_EQ(Value(true), ofBits("BIT", 1));
}

} // namespace
} // namespace plc::values
