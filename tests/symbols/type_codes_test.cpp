#include <gtest/gtest.h>

#include <climits>

#include "support/symbol_fixture.h"

namespace plc::test {
namespace {

using TypeCodeWithoutSize = DriverTest;
using StructuredTypeCode = DriverTest;
using BitTypeCode = DriverTest;
using TextTypeCodes = DriverTest;

/// Bytes from one array element of a code to the next; 0: the code has no size.
struct CodeSize {
    int code;
    int elementSize;
};

void PrintTo(const CodeSize& row, std::ostream* stream)
{
    *stream << "code " << row.code;
}

constexpr CodeSize kSizes[] = {{1, 1},  {2, 1},  {3, 2},  {4, 2},    {5, 4},    {6, 4},
                               {7, 4},  {8, 8},  {9, 8},  {10, 255}, {11, 255}, {13, 1},
                               {14, 1}, {15, 1}, {16, 2}, {17, 4}};

class TypeCode : public DriverTest, public ::testing::WithParamInterface<CodeSize> {};

INSTANTIATE_TEST_SUITE_P(All, TypeCode, ::testing::ValuesIn(kSizes),
                         [](const ::testing::TestParamInfo<CodeSize>& row) {
                             return "Code" + std::to_string(row.param.code);
                         });

TEST_P(TypeCode, IsCopiedUnchangedFromAScalar)
{
    passSymbols({scope("MAIN", {variable("x", GetParam().code, 40, 3)})});
    EXPECT_EQ(resolved(GetParam().code, 40, 3), resolve("MAIN.x"));
}

TEST_P(TypeCode, AdvancesArrayElementsByItsSize)
{
    const Label_Type_Info element = variable("x", GetParam().code, 1000, 3);
    passSymbols({scope("MAIN", {arrayOf(element, {10, 1, 9})})});
    EXPECT_EQ(resolved(GetParam().code, 1000, 3), resolve("MAIN.x[1]"));
    EXPECT_EQ(resolved(GetParam().code, 1000 + GetParam().elementSize, 3), resolve("MAIN.x[2]"));
    EXPECT_EQ(resolved(GetParam().code, 1000 + 9 * GetParam().elementSize, 3),
              resolve("MAIN.x[10]"));
}

TEST_P(TypeCode, AdvancesElementsOfMemberArraysByItsSize)
{
    const Label_Type_Info member = arrayOf(variable("m", GetParam().code, 6), {10, 0, 9});
    passSymbols({scope("MAIN", {structured("v", 1000, structure(20, {member}), 3)})});
    EXPECT_EQ(resolved(GetParam().code, 1006 + 3 * GetParam().elementSize, 3),
              resolve("MAIN.v.m[3]"));
}

TEST_P(TypeCode, IsWrittenAlsoWhenASubscriptFollowsAScalar)
{
    passSymbols({scope("MAIN", {variable("x", GetParam().code, 40, 3)})});
    EXPECT_EQ((Resolution{kNoElement, GetParam().code, 40, 3}), resolve("MAIN.x[1]"));
}

TEST_F(TypeCodeWithoutSize, ResolvesAndKeepsTheTypeOfTheCaller)
{
    for (int code = 0; code < 256; ++code) {
        if (code >= 1 && code <= 17)
            continue;
        passSymbols({scope("MAIN", {variable("x", code, 40, 3)})});
        ASSERT_EQ(resolved(kKeptType, 40, 3), resolve("MAIN.x")) << code;
        ASSERT_EQ((Resolution{kNoElement, kKeptType, 40, 3}), resolve("MAIN.x[0]")) << code;
    }
}

TEST_F(TypeCodeWithoutSize, ArrayResolvesToItsStartWhenTheSubscriptsAreValid)
{
    for (int code : {0, 18, 19, 100, 255}) {
        const Label_Type_Info element = variable("x", code, 40, 3);
        passSymbols({scope("MAIN", {arrayOf(element, {10, 0, 9})})});
        EXPECT_EQ(resolved(kKeptType, 40, 3), resolve("MAIN.x[0]")) << code;
        EXPECT_EQ(resolved(kKeptType, 40, 3), resolve("MAIN.x[7]")) << code;
        EXPECT_EQ((Resolution{kBadSubscript, kKeptType, 40, 3}), resolve("MAIN.x[-1]")) << code;
        EXPECT_EQ((Resolution{kBadSubscript, kKeptType, 40, 3}), resolve("MAIN.x")) << code;
        EXPECT_EQ((Resolution{kNoElement, kKeptType, 40, 3}), resolve("MAIN.x[1,2]")) << code;
    }
}

TEST_F(TypeCodeWithoutSize, PartsBehindItAreNotLookedAt)
{
    passSymbols({scope("MAIN", {variable("x", 0, 40, 3)})});
    EXPECT_EQ(resolved(kKeptType, 40, 3), resolve("MAIN.x.y[z]"));
}

TEST_F(StructuredTypeCode, TakesTheElementSizeFromItsDefinitionAndWritesNoType)
{
    const Label_Type_Info definition = structure(37, {variable("raw", 0, 2)});
    passSymbols({scope("MAIN", {arrayOf(structured("v", 1000, definition, 3), {10, 0, 9})})});
    EXPECT_EQ(resolved(kKeptType, 1000 + 4 * 37 + 2, 3), resolve("MAIN.v[4].raw"));
    EXPECT_EQ((Resolution{kNoElement, kKeptType, 1000 + 4 * 37, 3}), resolve("MAIN.v[4]"));
}

TEST_F(BitTypeCode, AddressCountsBits)
{
    passSymbols({scope("MAIN", {arrayOf(variable("bit", 13, 35, 3), {10, 0, 99})})});
    EXPECT_EQ(resolved(13, 35, 3), resolve("MAIN.bit[0]"));
    EXPECT_EQ(resolved(13, 55, 3), resolve("MAIN.bit[20]"));
}

TEST_F(TextTypeCodes, ElementsLie255BytesApart)
{
    passSymbols({scope("MAIN", {arrayOf(variable("s", 10, 0, 3), {10, 0, 9}),
                                arrayOf(variable("t", 11, 0, 3), {10, 0, 9, 0, 2})})});
    EXPECT_EQ(resolved(10, 255, 3), resolve("MAIN.s[1]"));
    EXPECT_EQ(resolved(10, 510, 3), resolve("MAIN.s[2]"));
    // a = 1, 1; extent 2: index 3
    EXPECT_EQ(resolved(11, 765, 3), resolve("MAIN.t[1,1]"));
}

} // namespace
} // namespace plc::test
