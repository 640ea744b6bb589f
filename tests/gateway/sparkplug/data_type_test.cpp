#include "gateway/sparkplug/data_type.h"

#include <gtest/gtest.h>

#include "support/data_points.h"

namespace plc::gateway {
namespace {

quint32 number(const char* type)
{
    return quint32(dataType(test::dataPoint(type)));
}

TEST(DataType, SignedStaysSigned)
{
    EXPECT_EQ(1u, number("SINT"));
    EXPECT_EQ(2u, number("INT"));
    EXPECT_EQ(3u, number("DINT"));
    EXPECT_EQ(4u, number("LINT"));
}

TEST(DataType, UnsignedNumbersAndBitStringsAreUnsigned)
{
    EXPECT_EQ(5u, number("USINT"));
    EXPECT_EQ(5u, number("BYTE"));
    EXPECT_EQ(6u, number("UINT"));
    EXPECT_EQ(6u, number("WORD"));
    EXPECT_EQ(7u, number("UDINT"));
    EXPECT_EQ(7u, number("DWORD"));
    EXPECT_EQ(7u, number("TIME"));
    EXPECT_EQ(8u, number("ULINT"));
    EXPECT_EQ(8u, number("LWORD"));
}

TEST(DataType, TheOtherElementaryTypes)
{
    EXPECT_EQ(9u, number("REAL"));
    EXPECT_EQ(10u, number("LREAL"));
    EXPECT_EQ(11u, number("BOOL"));
    EXPECT_EQ(11u, number("BIT"));
    EXPECT_EQ(12u, number("STRING(5)"));
    EXPECT_EQ(12u, number("WSTRING(5)"));
}

TEST(DataType, SeveralElementsAreArrays)
{
    EXPECT_EQ(22u, number("SINT*2"));
    EXPECT_EQ(23u, number("INT*2"));
    EXPECT_EQ(24u, number("DINT*2"));
    EXPECT_EQ(25u, number("LINT*2"));
    EXPECT_EQ(26u, number("USINT*2"));
    EXPECT_EQ(27u, number("UINT*2"));
    EXPECT_EQ(28u, number("UDINT*2"));
    EXPECT_EQ(28u, number("TIME*2"));
    EXPECT_EQ(29u, number("ULINT*2"));
    EXPECT_EQ(30u, number("REAL*2"));
    EXPECT_EQ(31u, number("LREAL*2"));
    EXPECT_EQ(32u, number("BOOL*2"));
    EXPECT_EQ(33u, number("STRING(5)*2"));
}

TEST(DataType, HasANameForErrors)
{
    EXPECT_EQ("Int8", dataTypeName(1));
    EXPECT_EQ("StringArray", dataTypeName(33));
    EXPECT_EQ("data type 99", dataTypeName(99));
}

} // namespace
} // namespace plc::gateway
