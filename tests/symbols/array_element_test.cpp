#include "tests/symbols/label_fixture.h"

namespace plc::test {
namespace {

using ArrayElement = DriverTest;
using LinearIndex = DriverTest;
using NumberBase = DriverTest;

TEST_F(ArrayElement, ArrayOfOneDimensionWithoutSubscriptIsABadSubscript)
{
    passVariables({arrayOf(variable("x", 3, 100, 2), {10, 0, 9})});
    EXPECT_EQ(failedAt(kBadSubscript, 100, 2), resolve("MAIN.x"));
}

TEST_F(ArrayElement, ArrayOfMoreDimensionsWithoutSubscriptIsNoElement)
{
    passVariables({arrayOf(variable("x", 3, 100, 2), {10, 0, 9, 0, 9})});
    EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.x"));
}

TEST_F(ArrayElement, FirstElementIsAtTheAddressOfTheArray)
{
    passVariables({arrayOf(variable("x", 6, 100, 2), {10, 5, 9})});
    EXPECT_EQ(resolved(6, 100, 2), resolve("MAIN.x[5]"));
    EXPECT_EQ(resolved(6, 104, 2), resolve("MAIN.x[6]"));
    EXPECT_EQ(failedAt(kBadSubscript, 100, 2), resolve("MAIN.x[4]"));
}

TEST_F(ArrayElement, NegativeLowerBoundIsSubtracted)
{
    passVariables({arrayOf(variable("x", 3, 100, 2), {10, -3, 3})});
    EXPECT_EQ(resolved(3, 100, 2), resolve("MAIN.x[-3]"));
    EXPECT_EQ(resolved(3, 106, 2), resolve("MAIN.x[0]"));
    EXPECT_EQ(resolved(3, 112, 2), resolve("MAIN.x[3]"));
    EXPECT_EQ(failedAt(kBadSubscript, 100, 2), resolve("MAIN.x[-4]"));
}

TEST_F(ArrayElement, AddressAdvancesModuloTwoToThe32)
{
    passVariables({arrayOf(variable("x", 8, INT_MAX - 7, 2), {10, 0, 9})});
    // 2147483640 + 8 is one above the largest signed address.
    EXPECT_EQ(resolved(8, INT_MIN, 2), resolve("MAIN.x[1]"));
    // 2147483640 + 8 * 2147483647 = 19327352816 = 4 * 2^32 + 2147483632.
    EXPECT_EQ(resolved(8, 2147483632, 2), resolve("MAIN.x[2147483647]"));
}

TEST_F(ArrayElement, StructureStrideIsTheSizeOfOneElement)
{
    passVariables(
        {arrayOf(structured("v", 1000, structure(-6, {variable("b", 5, 4)}), 2), {10, 0, 9})});
    EXPECT_EQ(resolved(5, 1000 - 18 + 4, 2), resolve("MAIN.v[3].b"));
}

TEST_F(ArrayElement, SubscriptOnAStructuredElementThatIsNoArrayIsIgnored)
{
    passVariables({structured("v", 40, structure(8, {variable("b", 5, 4)}), 2)});
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v[5].b"));
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v[].b"));
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v[5].c"));
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v[5]"));
}

TEST_F(ArrayElement, StructuredElementWithoutMemberIsNoElement)
{
    passVariables({structured("v", 40, structure(8, {variable("b", 5, 4)}), 2)});
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v"));
}

TEST_F(ArrayElement, BoundsShorterThanTheDimensionsGiveNoElement)
{
    for (int kept = 0; kept < 5; ++kept) {
        Label_Type_Info record = arrayOf(variable("x", 3, 100, 2), {10, 0, 9, 0, 9});
        record.arrayBounds = record.arrayBounds.mid(0, kept);
        passVariables({record});
        EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.x[1,2]")) << kept;
        EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.x[a,b]")) << kept;
    }
}

TEST_F(ArrayElement, DimensionCountBelowOneGivesNoElement)
{
    for (int dimCount : {0, -1, INT_MIN}) {
        Label_Type_Info record = arrayOf(variable("x", 3, 100, 2), {10, 0, 9});
        record.dimCount = dimCount;
        passVariables({record});
        EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.x[1]")) << dimCount;
        EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.x")) << dimCount;
    }
}

TEST_F(ArrayElement, DimensionCountIsNotLookedAtWithoutTheArrayFlag)
{
    Label_Type_Info record = variable("x", 3, 100, 2);
    record.dimCount = 3;
    record.arrayBounds = {10, 0, 9};
    passVariables({record});
    EXPECT_EQ(resolved(3, 100, 2), resolve("MAIN.x"));
    EXPECT_EQ((Resolution{kNoElement, 3, 100, 2}), resolve("MAIN.x[1]"));
}

TEST_F(ArrayElement, UpperFlagBitsAreNotUsed)
{
    passVariables(
        {variable("x", 0xFC04, 10, 3), arrayOf(variable("y", 0xFC03, 100, 2), {10, 0, 9})});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.x"));
    EXPECT_EQ(resolved(3, 102, 2), resolve("MAIN.y[1]"));
}

struct IndexResult {
    int result;
    unsigned int index;
};

IndexResult linearIndex(const char* subscript, int dimCount, const QList<int>& bounds)
{
    IndexResult out = {0, 0};
    out.result = get_label_address_array_memory_index(subscript, dimCount, bounds, out.index);
    return out;
}

#define EXPECT_INDEX(expected, subscript, dimCount, ...)                         \
    do {                                                                         \
        const IndexResult found = linearIndex(subscript, dimCount, __VA_ARGS__); \
        EXPECT_EQ(0, found.result) << subscript;                                 \
        EXPECT_EQ(expected, found.index) << subscript;                           \
    } while (false)

TEST_F(LinearIndex, OneDimensionCountsFromItsLowerBound)
{
    EXPECT_INDEX(0u, "0", 1, (QList<int>{10, 0, 9}));
    EXPECT_INDEX(9u, "9", 1, (QList<int>{10, 0, 9}));
    EXPECT_INDEX(2u, "7", 1, (QList<int>{10, 5, 9}));
    EXPECT_INDEX(3u, "-2", 1, (QList<int>{10, -5, 9}));
}

TEST_F(LinearIndex, UpperBoundIsNotChecked)
{
    EXPECT_INDEX(10u, "10", 1, (QList<int>{10, 0, 9}));
    EXPECT_INDEX(2147483647u, "2147483647", 1, (QList<int>{10, 0, 9}));
    EXPECT_INDEX(5u, "5", 1, (QList<int>{10, 0, -100}));
}

TEST_F(LinearIndex, StrideIsUpperMinusLowerOfTheLaterDimensions)
{
    EXPECT_INDEX(10u, "2,3", 2, (QList<int>{10, 0, 3, 1, 5}));
    // Row 1 begins where element 4 of row 0 lies.
    EXPECT_INDEX(4u, "1,1", 2, (QList<int>{10, 0, 3, 1, 5}));
    EXPECT_INDEX(4u, "0,5", 2, (QList<int>{10, 0, 3, 1, 5}));
    // a = 1, 2, 2; extents 9, 4, 2: 2 + 2 * 2 + 1 * 4 * 2
    EXPECT_INDEX(14u, "1,2,3", 3, (QList<int>{10, 0, 9, 0, 4, 1, 3}));
    // a = 1, 2, 3, 4; later extents 2, 3, 5: 4 + 3 * 5 + 2 * 15 + 1 * 30
    EXPECT_INDEX(79u, "1,2,3,4", 4, (QList<int>{10, 0, 7, 0, 2, 0, 3, 0, 5}));
}

TEST_F(LinearIndex, ExtentOfTheFirstDimensionIsNotUsed)
{
    EXPECT_INDEX(10u, "2,3", 2, (QList<int>{10, 0, 3000, 1, 5}));
    EXPECT_INDEX(10u, "2,3", 2, (QList<int>{10, 0, INT_MIN, 1, 5}));
}

TEST_F(LinearIndex, DimensionOfOneElementHasStrideZero)
{
    EXPECT_INDEX(0u, "3,0", 2, (QList<int>{10, 0, 9, 0, 0}));
    EXPECT_INDEX(1u, "2,2,1", 3, (QList<int>{10, 0, 9, 2, 2, 0, 0}));
}

TEST_F(LinearIndex, NumberOfSubscriptsMustBeTheDimensionCount)
{
    const QList<int> bounds = {10, 0, 9, 0, 9};
    for (const char* subscript : {"", "1", "1,2,3", "1,2,", ",1,2", ",,", "a"})
        EXPECT_EQ(1, linearIndex(subscript, 2, bounds).result) << subscript;
    for (const char* subscript : {"1,2", ",", "1,"})
        EXPECT_EQ(1, linearIndex(subscript, 1, bounds).result) << subscript;
}

TEST_F(LinearIndex, DimensionCountBelowOneIsNoElement)
{
    const QList<int> bounds = {10, 0, 9};
    for (int dimCount : {0, -1, INT_MIN}) {
        EXPECT_EQ(1, linearIndex("", dimCount, bounds).result);
        EXPECT_EQ(1, linearIndex("1", dimCount, bounds).result);
    }
}

TEST_F(LinearIndex, HugeDimensionCountIsNoElement)
{
    EXPECT_EQ(1, linearIndex("1", INT_MAX, {10, 0, 9}).result);
    EXPECT_EQ(1, linearIndex("", INT_MAX, {}).result);
}

TEST_F(LinearIndex, SubscriptThatIsNoNumberIsABadSubscript)
{
    const QList<int> bounds = {10, 0, 9};
    for (const char* subscript : {"", "x", "1x", "1]", "1.5", "--1", "1 2", "0x1", "+", "-"})
        EXPECT_EQ(3, linearIndex(subscript, 1, bounds).result) << subscript;
    const QList<int> twoDimensions = {10, 0, 9, 0, 9};
    for (const char* subscript : {",", "1,", ",1", "1,x", "x,1", "-1,1", "1,-1"})
        EXPECT_EQ(3, linearIndex(subscript, 2, twoDimensions).result) << subscript;
}

TEST_F(LinearIndex, SubscriptOutsideThe32BitRangeIsABadSubscript)
{
    const QList<int> bounds = {10, INT_MIN, 9};
    EXPECT_EQ(3, linearIndex("2147483648", 1, bounds).result);
    EXPECT_EQ(3, linearIndex("-2147483649", 1, bounds).result);
    EXPECT_EQ(3, linearIndex("4294967297", 1, bounds).result);
    EXPECT_EQ(3, linearIndex("99999999999999999999999", 1, bounds).result);
}

TEST_F(LinearIndex, DifferenceFromTheLowerBoundIsExact)
{
    EXPECT_INDEX(2147483648u, "0", 1, (QList<int>{10, INT_MIN, 9}));
    EXPECT_INDEX(4294967295u, "2147483647", 1, (QList<int>{10, INT_MIN, 9}));
    EXPECT_INDEX(0u, "-2147483648", 1, (QList<int>{10, INT_MIN, 9}));
    // -2147483648 - 1 is below zero although 32 bits would make it large.
    EXPECT_EQ(3, linearIndex("-2147483648", 1, {10, 1, 9}).result);
    EXPECT_EQ(3, linearIndex("-2", 1, {10, INT_MAX, 9}).result);
}

TEST_F(LinearIndex, ExtentsAndProductsAreModuloTwoToThe32)
{
    // Extent -5: index 0 + 1 * (2^32 - 5).
    EXPECT_INDEX(4294967291u, "1,0", 2, (QList<int>{10, 0, 9, 0, -5}));
    // Extent 2147483647 + 2147483648 = 2^32 - 1.
    EXPECT_INDEX(4294967295u, "1,-2147483648", 2, (QList<int>{10, 0, 9, INT_MIN, INT_MAX}));
    // 65536 * 65536 = 2^32 = 0.
    EXPECT_INDEX(7u, "3,0,7", 3, (QList<int>{10, 0, 9, 0, 65536, 0, 65536}));
    // 3 * 2147483647 = 2^32 + 2147483645; + 1
    EXPECT_INDEX(2147483646u, "3,1", 2, (QList<int>{10, 0, 9, 0, INT_MAX}));
}

TEST_F(LinearIndex, BoundsThatAreTooShortAreNoElement)
{
    EXPECT_EQ(1, linearIndex("1", 1, {}).result);
    EXPECT_EQ(1, linearIndex("1", 1, {10}).result);
    EXPECT_EQ(1, linearIndex("1", 1, {10, 0}).result);
    EXPECT_EQ(1, linearIndex("1,1", 2, {10, 0, 9, 0}).result);
    // The bounds are looked at before any subscript is converted.
    EXPECT_EQ(1, linearIndex("x", 1, {10, 0}).result);
    EXPECT_EQ(1, linearIndex("x", 1, {37, 0}).result);
}

TEST_F(LinearIndex, SurplusBoundsAreNotLookedAt)
{
    EXPECT_INDEX(4u, "4", 1, (QList<int>{10, 0, 9, 5, 6, 7}));
}

TEST_F(LinearIndex, ThousandDimensionsAreTaken)
{
    QStringList subscripts;
    QList<int> bounds = {10};
    for (int i = 0; i < 1000; ++i) {
        subscripts.append("1");
        bounds << 0 << 1;
    }
    // Each of the thousand subscripts adds 1: all extents are 1.
    EXPECT_INDEX(1000u, subscripts.join(",").toLatin1().constData(), 1000, bounds);
}

TEST_F(NumberBase, TenGivesDecimalSubscripts)
{
    EXPECT_INDEX(10u, "010", 1, (QList<int>{10, 0, 9}));
    EXPECT_EQ(3, linearIndex("a", 1, {10, 0, 9}).result);
}

TEST_F(NumberBase, SixteenGivesHexadecimalSubscripts)
{
    EXPECT_INDEX(26u, "1a", 1, (QList<int>{16, 0, 9}));
    EXPECT_INDEX(26u, "1A", 1, (QList<int>{16, 0, 9}));
    EXPECT_INDEX(26u, "0x1A", 1, (QList<int>{16, 0, 9}));
    EXPECT_INDEX(16u, "10", 1, (QList<int>{16, 0, 9}));
    EXPECT_EQ(3, linearIndex("g", 1, {16, 0, 9}).result);
}

TEST_F(NumberBase, ZeroReadsTheBaseFromThePrefix)
{
    EXPECT_INDEX(10u, "10", 1, (QList<int>{0, 0, 9}));
    EXPECT_INDEX(16u, "0x10", 1, (QList<int>{0, 0, 9}));
    EXPECT_INDEX(8u, "010", 1, (QList<int>{0, 0, 9}));
    EXPECT_INDEX(0u, "0", 1, (QList<int>{0, 0, 9}));
    EXPECT_EQ(3, linearIndex("08", 1, {0, 0, 9}).result);
}

TEST_F(NumberBase, TwoAndThirtySixAreTheEnds)
{
    EXPECT_INDEX(5u, "101", 1, (QList<int>{2, 0, 9}));
    EXPECT_EQ(3, linearIndex("2", 1, {2, 0, 9}).result);
    EXPECT_INDEX(1295u, "zz", 1, (QList<int>{36, 0, 9}));
}

TEST_F(NumberBase, BaseThatNoNumberHasIsABadSubscript)
{
    for (int base : {1, 37, 38, 100, -1, -10, -16, INT_MAX, INT_MIN}) {
        EXPECT_EQ(3, linearIndex("1", 1, {base, 0, 9}).result) << base;
        EXPECT_EQ(3, linearIndex("0", 1, {base, 0, 9}).result) << base;
    }
}

TEST_F(NumberBase, CountOfSubscriptsIsCheckedBeforeTheBase)
{
    EXPECT_EQ(1, linearIndex("1,2", 1, {37, 0, 9}).result);
}

TEST_F(NumberBase, AppliesToEveryDimension)
{
    // a = 10, 11; extent 16: 10 * 16 + 11
    EXPECT_INDEX(171u, "a,b", 2, (QList<int>{16, 0, 15, 0, 16}));
}

TEST_F(NumberBase, SubscriptsConvertAsQtConvertsThem)
{
    const QString texts[] = {"0",
                             "7",
                             "-7",
                             "+7",
                             " 7",
                             "7 ",
                             "\t7",
                             "7\n",
                             " + 7",
                             "07",
                             "0x7",
                             "0X7",
                             "0x",
                             "x7",
                             "7f",
                             "7F",
                             "1e2",
                             "1,000",
                             "",
                             " ",
                             "0b1",
                             "00",
                             "-0",
                             "+-1",
                             "2147483647",
                             "2147483648",
                             "-2147483648",
                             "-2147483649",
                             "7fffffff",
                             "80000000",
                             "zz",
                             QString(QChar(0x0667)),
                             QString(QChar(0xFF17)),
                             QString(QChar(0x00A0)) + "7",
                             QString("7") + QChar(0) + "8",
                             QString("7") + QChar(0)};
    for (int base = 0; base <= 36; base = base == 0 ? 2 : base + 1) {
        for (const QString& text : texts) {
            if (text.contains(','))
                continue;
            bool converts = false;
            const int value = text.toInt(&converts, base);
            const QList<int> bounds = {base, INT_MIN, 0};
            unsigned int index = 0;
            const int result = get_label_address_array_memory_index(text, 1, bounds, index);
            ASSERT_EQ(converts ? 0 : 3, result) << text.toStdString() << " in base " << base;
            const quint32 expected = converts ? quint32(value) ^ 0x80000000u : 0;
            ASSERT_EQ(expected, index) << text.toStdString();
        }
    }
}

} // namespace
} // namespace plc::test
