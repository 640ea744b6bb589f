#include <gtest/gtest.h>

#include <QtCore/QSet>

#include "project/memory_layout.h"
#include "tests/support/random.h"
#include "values/iec_types.h"

namespace plc::project {
namespace {

Variable variable(const char* type, qint32 offset, const QVector<ArrayDimension>& dimensions = {},
                  int length = 0)
{
    Variable result;
    result.name = QStringLiteral("v");
    result.type = values::findIecType(QLatin1String(type));
    result.offset = offset;
    result.dimensions = dimensions;
    result.stringLength = length;
    return result;
}

TEST(MemoryLayout, ElementSizesFollowTheType)
{
    EXPECT_EQ(1, elementSize(variable("BOOL", 0)));
    EXPECT_EQ(2, elementSize(variable("WORD", 0)));
    EXPECT_EQ(4, elementSize(variable("TIME", 0)));
    EXPECT_EQ(8, elementSize(variable("LWORD", 0)));
    EXPECT_EQ(11, elementSize(variable("STRING", 0, {}, 10)));
    EXPECT_EQ(22, elementSize(variable("WSTRING", 0, {}, 10)));
}

TEST(MemoryLayout, TextsOfAnArrayLie255BytesApart)
{
    EXPECT_EQ(255, elementStride(variable("STRING", 0, {{1, 2}}, 10)));
    EXPECT_EQ(255, elementStride(variable("WSTRING", 0, {{1, 2}}, 10)));
    EXPECT_EQ(2, elementStride(variable("INT", 0, {{1, 2}})));
    EXPECT_EQ(1, elementStride(variable("BIT", 0, {{1, 2}})));
}

TEST(MemoryLayout, LastSubscriptRunsFastest)
{
    const QVector<ArrayDimension> table = {{0, 3}, {1, 5}};
    EXPECT_EQ(0, elementIndex(table, {0, 1}));
    EXPECT_EQ(4, elementIndex(table, {0, 5}));
    EXPECT_EQ(5, elementIndex(table, {1, 1}));
    EXPECT_EQ(12, elementIndex(table, {2, 3}));
    EXPECT_EQ(19, elementIndex(table, {3, 5}));
    EXPECT_EQ(20, elementCount(variable("INT", 0, table)));
}

TEST(MemoryLayout, NegativeBoundsCountFromTheLowerOne)
{
    const QVector<ArrayDimension> cube = {{-1, 1}, {-2, -1}, {5, 8}};
    EXPECT_EQ(0, elementIndex(cube, {-1, -2, 5}));
    EXPECT_EQ(1 * 8 + 1 * 4 + 2, elementIndex(cube, {0, -1, 7}));
    EXPECT_EQ(24, elementCount(variable("INT", 0, cube)));
}

TEST(MemoryLayout, TransferEndsBehindTheLastElement)
{
    EXPECT_EQ(12, transferEnd(variable("WORD", 10)));
    EXPECT_EQ(10 + 20 * 2, transferEnd(variable("INT", 10, {{0, 3}, {1, 5}})));
    EXPECT_EQ(10 + 11, transferEnd(variable("STRING", 10, {}, 10)));
}

TEST(MemoryLayout, TextArraysAreMovedInWholeRegisters)
{
    // 255 + 12 bytes are odd.
    EXPECT_EQ(10 + 268, transferEnd(variable("STRING", 10, {{1, 2}}, 11)));
    EXPECT_EQ(10 + 266, transferEnd(variable("STRING", 10, {{1, 2}}, 10)));
}

TEST(MemoryLayout, BitsAreMovedInWholeWords)
{
    // Word 2 begins at byte 2.
    EXPECT_EQ(4, transferEnd(variable("BIT", 32)));
    EXPECT_EQ(4, transferEnd(variable("BIT", 47)));
    EXPECT_EQ(6, transferEnd(variable("BIT", 47, {{0, 1}})));
    EXPECT_EQ(6, transferEnd(variable("BIT", 35, {{1, 20}})));
}

TEST(MemoryLayout, HighByteOfABitsWordComesFirst)
{
    EXPECT_EQ(3, bitPlace(32).byte);
    EXPECT_EQ(0, bitPlace(32).bit);
    EXPECT_EQ(3, bitPlace(39).byte);
    EXPECT_EQ(7, bitPlace(39).bit);
    EXPECT_EQ(2, bitPlace(40).byte);
    EXPECT_EQ(0, bitPlace(40).bit);
    EXPECT_EQ(2, bitPlace(47).byte);
    EXPECT_EQ(7, bitPlace(47).bit);
}

TEST(MemoryLayout, BitArrayMayEndInTheLowByteOfTheNextWord)
{
    EXPECT_FALSE(findSharedMemory({variable("BIT", 160, {{1, 24}})}));
    EXPECT_TRUE(findSharedMemory({variable("BIT", 160, {{1, 25}})}));
    // Bits 0 to 7 of word 10 are not in this one, so that bits 8 to 15 of word 11 are free.
    EXPECT_FALSE(findSharedMemory({variable("BIT", 168, {{1, 32}})}));
    EXPECT_TRUE(findSharedMemory({variable("BIT", 168, {{1, 33}})}));
}

TEST(MemoryLayout, HugeBitArrayIsRefusedWithoutWalkingAllOfIt)
{
    EXPECT_TRUE(findSharedMemory({variable("BIT", 0, {{0, 2147483646}})}));
}

TEST(MemoryLayout, FindsTheTwoThatShareAByteWhateverTheOrder)
{
    const Variable long1 = variable("LREAL", 8);
    const Variable inside = variable("BYTE", 15);
    const Variable behind = variable("BYTE", 16);
    EXPECT_FALSE(findSharedMemory({long1, behind}));
    for (const auto& order :
         {QVector<Variable>{long1, inside, behind}, QVector<Variable>{behind, inside, long1}}) {
        const std::optional<SharedMemory> shared = findSharedMemory(order);
        ASSERT_TRUE(shared);
        EXPECT_EQ(15, shared->byte);
        EXPECT_EQ(
            1, std::max(shared->first, shared->second) - std::min(shared->first, shared->second));
    }
}

TEST(MemoryLayout, AgreesWithMarkingEveryBitByItself)
{
    plc::test::Random random(20);
    const char* const types[] = {"BOOL", "INT", "DINT", "LREAL", "BIT"};
    int sharing = 0;
    for (int round = 0; round < 500; ++round) {
        QVector<Variable> variables;
        QSet<qint64> marked;
        bool shared = false;
        for (int i = 0; i < 4; ++i) {
            const char* type = types[random.below(5)];
            const bool isBitType = qstrcmp(type, "BIT") == 0;
            const Variable next =
                variable(type, random.below(isBitType ? 800 : 50), {{1, random.between(1, 5)}});
            variables.append(next);
            for (qint64 element = 0; element < elementCount(next); ++element) {
                const qint64 at = next.offset + element * elementStride(next);
                const qint64 first = isBitType ? bitPlace(at).byte * 8 + bitPlace(at).bit : at * 8;
                for (qint64 bit = first; bit < first + (isBitType ? 1 : 8 * elementSize(next));
                     ++bit) {
                    shared = shared || marked.contains(bit);
                    marked.insert(bit);
                }
            }
        }
        ASSERT_EQ(shared, findSharedMemory(variables).has_value()) << round;
        sharing += shared ? 1 : 0;
    }
    EXPECT_GT(sharing, 50);
    EXPECT_LT(sharing, 450);
}

TEST(IecTypes, RangesAreThoseOfTheType)
{
    const auto range = [](const char* name) {
        return values::iecRange(*values::findIecType(QLatin1String(name)));
    };
    EXPECT_EQ(-128.0, range("SINT").lowest);
    EXPECT_EQ(127.0, range("SINT").highest);
    EXPECT_EQ(0.0, range("UINT").lowest);
    EXPECT_EQ(65535.0, range("UINT").highest);
    EXPECT_EQ(-2147483648.0, range("DINT").lowest);
    EXPECT_EQ(4294967295.0, range("TIME").highest);
    EXPECT_EQ(-9223372036854775808.0, range("LINT").lowest);
    EXPECT_EQ(18446744073709551615.0, range("LWORD").highest);
    EXPECT_FLOAT_EQ(3.4028235e38f, float(range("REAL").highest));
    EXPECT_EQ(1.0, range("BIT").highest);
}

TEST(IecTypes, CodesAndSizesAreThoseOfTheDriver)
{
    const struct {
        const char* name;
        int code;
        int size;
    } expected[] = {{"BOOL", 1, 1},    {"BYTE", 2, 1},     {"SINT", 14, 1},  {"USINT", 15, 1},
                    {"INT", 3, 2},     {"UINT", 4, 2},     {"WORD", 16, 2},  {"DINT", 5, 4},
                    {"UDINT", 6, 4},   {"REAL", 7, 4},     {"DWORD", 17, 4}, {"TIME", 17, 4},
                    {"LREAL", 8, 8},   {"LINT", 9, 8},     {"ULINT", 9, 8},  {"LWORD", 9, 8},
                    {"STRING", 10, 0}, {"WSTRING", 11, 0}, {"BIT", 13, 0}};
    for (const auto& type : expected) {
        const values::IecType* found = values::findIecType(QLatin1String(type.name));
        ASSERT_NE(nullptr, found) << type.name;
        EXPECT_EQ(type.code, found->code) << type.name;
        EXPECT_EQ(type.size, found->size) << type.name;
    }
    EXPECT_EQ(nullptr, values::findIecType(QStringLiteral("bool")));
    EXPECT_EQ(nullptr, values::findIecType(QString()));
}

/// "first/second@byte" for each.
std::vector<std::string> texts(const QVector<SharedMemory>& list)
{
    std::vector<std::string> texts;
    for (const SharedMemory& shared : list)
        texts.push_back(std::to_string(shared.first) + "/" + std::to_string(shared.second) + "@" +
                        std::to_string(shared.byte));
    return texts;
}

Variable inArea(int area, Variable variable)
{
    variable.area = area;
    return variable;
}

TEST(CoveredVariables, LieOverWhatBeginsBeforeThemOrIsLarger)
{
    // A bit and a byte in a word; a value that reaches into the next one; another area.
    EXPECT_EQ((std::vector<std::string>{"2/1@10", "2/0@11", "3/4@22"}),
              texts(coveredVariables({variable("BYTE", 11), variable("BIT", 168),
                                      variable("WORD", 10), variable("REAL", 20),
                                      variable("REAL", 22), inArea(1, variable("REAL", 20))})));
    EXPECT_TRUE(coveredVariables({variable("WORD", 10), variable("WORD", 12)}).isEmpty());
}

TEST(AllSharedMemory, HasEveryTwoVariables)
{
    Variable overlay = variable("DWORD", 10);
    overlay.overlay = true;
    const QVector<Variable> variables{overlay, variable("WORD", 10), variable("WORD", 12),
                                      variable("BYTE", 13), variable("BYTE", 14)};
    EXPECT_EQ((std::vector<std::string>{"0/1@10", "0/2@12", "0/3@13", "2/3@13"}),
              texts(allSharedMemory(variables, 10)));
    EXPECT_EQ((std::vector<std::string>{"0/1@10", "0/2@12"}), texts(allSharedMemory(variables, 2)));
}

TEST(AllSharedMemory, HasTwoVariablesOnceHoweverManyBitsTheyShare)
{
    EXPECT_EQ((std::vector<std::string>{"0/1@10"}),
              texts(allSharedMemory({variable("WORD", 10), variable("BIT", 160, {{0, 15}})}, 10)));
}

TEST(MemoryGaps, LieBeforeBetweenAndBehindVariables)
{
    const QVector<MemoryArea> areas{{0, 20}, {1, 8}, {2, 4}};
    const QVector<Variable> variables{variable("REAL", 2), variable("WORD", 10),
                                      variable("DWORD", 8), inArea(1, variable("LREAL", 0)),
                                      variable("BIT", 16 * 14)};
    std::vector<std::string> gaps;
    for (const MemoryGap& gap : memoryGaps(variables, areas, 1))
        gaps.push_back(std::to_string(gap.area) + ":" + std::to_string(gap.first) + "-" +
                       std::to_string(gap.end));
    EXPECT_EQ((std::vector<std::string>{"0:0-2", "0:6-8", "0:12-15", "0:16-20", "2:0-4"}), gaps);
    EXPECT_EQ(2, memoryGaps(variables, areas, 4).size());
}

} // namespace
} // namespace plc::project
