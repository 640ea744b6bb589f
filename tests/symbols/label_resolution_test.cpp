#include "symbols/label_resolution.h"

#include <gtest/gtest.h>

#include <climits>

#include "base/wrapped_int.h"
#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc {
namespace test {
namespace {

using LabelGrammar = DriverTest;
using ScopeLookup = DriverTest;
using ArrayElement = DriverTest;
using StructureWalk = DriverTest;
using PartWalk = DriverTest;
using LinearIndex = DriverTest;
using NumberBase = DriverTest;
using RandomLabels = DriverTest;

Resolution failed(int result)
{
    return Resolution{result, kKeptType, kKeptAddress, kKeptArea};
}

/// A failure after the variable was found: its area and address are written, its type is not.
Resolution failedAt(int result, int address, int areaIndex)
{
    return Resolution{result, kKeptType, address, areaIndex};
}

void passVariables(const QList<Label_Type_Info>& variables)
{
    passSymbols({scope("MAIN", variables)});
}

// --- The labels of one plant, each with all that comes out of it ---

struct WorkedLabel {
    const char* name;
    const char* label;
    Resolution expected;
};

void PrintTo(const WorkedLabel& row, std::ostream* stream)
{
    *stream << row.label;
}

class WorkedLabels : public DriverTest, public ::testing::WithParamInterface<WorkedLabel> {};

TEST_P(WorkedLabels, ResolveToTypeAddressAndArea)
{
    passSymbols({mainScope()});
    EXPECT_EQ(GetParam().expected, resolve(GetParam().label));
}

const WorkedLabel kWorkedLabels[] = {
    {"Scalar", "MAIN.speed", {0, 4, 10, 3}},
    {"ElementOfTwoDimensions", "MAIN.tab[2,3]", {0, 3, 120, 3}},
    {"MemberOfArrayElement", "MAIN.rec[3].b", {0, 7, 228, 3}},
    {"ArrayMemberOfArrayElement", "MAIN.rec[3].flags[2]", {0, 2, 234, 3}},
    {"AboveTheUpperBound", "MAIN.rec[9].a", {0, 6, 296, 3}},
    {"SurplusPart", "MAIN.speed.x", {0, 4, 10, 3}},
    {"SubscriptOfTheScope", "MAIN[7].speed", {0, 4, 10, 3}},
    {"BelowTheLowerBound", "MAIN.rec[0].a", {3, kKeptType, 200, 3}},
    {"ArrayWithoutSubscript", "MAIN.rec.a", {3, kKeptType, 200, 3}},
    {"TooFewSubscripts", "MAIN.tab[1]", {1, kKeptType, 100, 3}},
    {"SubscriptOnAScalar", "MAIN.speed[1]", {1, 4, 10, 3}},
    {"EndsAtAStructure", "MAIN.rec[1]", {1, kKeptType, 200, 3}},
    {"UnknownMember", "MAIN.rec[2].zz", {7, kKeptType, 212, 3}},
    {"UnknownVariable", "MAIN.nosuch", {1, kKeptType, kKeptAddress, kKeptArea}},
    {"UnknownScope", "OTHER.speed", {2, kKeptType, kKeptAddress, kKeptArea}},
    {"OnePart", "MAIN", {11, kKeptType, kKeptAddress, kKeptArea}},
    {"Empty", "", {6, kKeptType, kKeptAddress, kKeptArea}},
};

INSTANTIATE_TEST_SUITE_P(Plant, WorkedLabels, ::testing::ValuesIn(kWorkedLabels),
                         [](const ::testing::TestParamInfo<WorkedLabel>& row) {
                             return std::string(row.param.name);
                         });

// --- Label grammar ---

TEST_F(LabelGrammar, NullLabelIsEmpty)
{
    EXPECT_EQ(failed(kEmptyLabel), resolve(QString()));
}

TEST_F(LabelGrammar, LabelWithoutDotHasNoVariablePart)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoVariablePart), resolve("OTHER"));
    EXPECT_EQ(failed(kNoVariablePart), resolve("MAIN[1]"));
    EXPECT_EQ(failed(kNoVariablePart), resolve(" "));
}

TEST_F(LabelGrammar, LeadingDotNamesTheScopeOfTheEmptyName)
{
    passSymbols({scope("", {variable("x", 4, 6, 2)})});
    EXPECT_EQ(resolved(4, 6, 2), resolve(".x"));
    EXPECT_EQ(resolved(4, 6, 2), resolve("[1].x"));
    EXPECT_EQ(failed(kNoElement), resolve("."));
    EXPECT_EQ(failed(kNoElement), resolve("..x"));
}

TEST_F(LabelGrammar, LeadingDotWithoutScopeOfTheEmptyNameIsAnUnknownScope)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoScope), resolve(".speed"));
    EXPECT_EQ(failed(kNoScope), resolve("."));
}

TEST_F(LabelGrammar, EmptyVariableNameMatchesOnlyAnEmptyName)
{
    passSymbols({mainScope(),
                 scope("SPARE", {structured("", 40, structure(8, {variable("b", 5, 4)}), 1)})});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN."));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN..speed"));
    EXPECT_EQ(resolved(5, 44, 1), resolve("SPARE..b"));
}

TEST_F(LabelGrammar, EmptyMemberNameMatchesOnlyAnEmptyName)
{
    passVariables({structured("v", 40, structure(8, {variable("", 5, 4)}), 1),
                   structured("w", 60, structure(8, {variable("b", 5, 4)}), 1)});
    EXPECT_EQ(resolved(5, 44, 1), resolve("MAIN.v."));
    EXPECT_EQ(resolved(5, 44, 1), resolve("MAIN.v..b"));
    EXPECT_EQ(failedAt(kNoMember, 60, 1), resolve("MAIN.w."));
    EXPECT_EQ(failedAt(kNoMember, 60, 1), resolve("MAIN.w..b"));
}

TEST_F(LabelGrammar, NamesAreComparedCaseSensitivelyAndUntrimmed)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoScope), resolve("main.speed"));
    EXPECT_EQ(failed(kNoScope), resolve(" MAIN.speed"));
    EXPECT_EQ(failed(kNoScope), resolve("MAIN .speed"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.Speed"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN. speed"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.speed "));
    EXPECT_EQ(failedAt(kNoMember, 200, 3), resolve("MAIN.rec[1].B"));
    EXPECT_EQ(failedAt(kNoMember, 200, 3), resolve("MAIN.rec[1].b "));
}

TEST_F(LabelGrammar, NameThatOnlyBeginsLikeAnotherDoesNotMatch)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.spee"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.speedy"));
    EXPECT_EQ(failed(kNoScope), resolve("MAI.speed"));
    EXPECT_EQ(failed(kNoScope), resolve("MAINS.speed"));
}

TEST_F(LabelGrammar, NamesBeyondLatinLettersMatch)
{
    const QString tank = QString::fromUtf8("Behälter");
    const QString level = QString::fromUtf8("液位");
    passSymbols({scope(tank, {variable(level, 7, 24, 5)})});
    EXPECT_EQ(resolved(7, 24, 5), resolve(tank + "." + level));
    EXPECT_EQ(failed(kNoScope), resolve("Behalter." + level));
}

TEST_F(LabelGrammar, EmbeddedNullCharacterIsPartOfTheName)
{
    const QString name = QString("a") + QChar(0) + QString("b");
    passVariables({variable("a", 4, 6, 2), variable(name, 5, 8, 2)});
    EXPECT_EQ(resolved(4, 6, 2), resolve("MAIN.a"));
    EXPECT_EQ(resolved(5, 8, 2), resolve("MAIN." + name));
}

TEST_F(LabelGrammar, OpeningBracketWithoutClosingOneStaysInTheName)
{
    passVariables({variable("x", 4, 6, 2), variable("y[5", 3, 8, 2),
                   structured("v", 40, structure(8, {variable("b", 5, 4)}), 2)});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.x[5"));
    EXPECT_EQ(resolved(3, 8, 2), resolve("MAIN.y[5"));
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v.b[1"));
    EXPECT_EQ(failed(kNoScope), resolve("MAIN[5.x"));
}

TEST_F(LabelGrammar, ClosingBracketWithoutOpeningOneStaysInTheName)
{
    passVariables({variable("x", 4, 6, 2), variable("y]", 3, 8, 2)});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.x]"));
    EXPECT_EQ(resolved(3, 8, 2), resolve("MAIN.y]"));
}

TEST_F(LabelGrammar, SubscriptIsCutAtTheLastOpeningBracket)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.rec[3][1].a"));
    passVariables({arrayOf(variable("y[3]", 3, 100, 2), {10, 0, 9})});
    EXPECT_EQ(resolved(3, 104, 2), resolve("MAIN.y[3][2]"));
}

TEST_F(LabelGrammar, TextAfterTheClosingBracketSpoilsTheSubscript)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failedAt(kBadSubscript, 200, 3), resolve("MAIN.rec[2]x.a"));
    EXPECT_EQ(failedAt(kBadSubscript, 200, 3), resolve("MAIN.rec[2] .a"));
}

TEST_F(LabelGrammar, ClosingBracketAnywhereLetsTheLastCharacterFall)
{
    // The part is taken to end with "]" as soon as it holds one.
    passVariables({arrayOf(variable("a]b", 3, 100, 2), {10, 0, 9})});
    EXPECT_EQ(resolved(3, 102, 2), resolve("MAIN.a]b[1]"));
    EXPECT_EQ(resolved(3, 102, 2), resolve("MAIN.a]b[12"));
    EXPECT_EQ(failedAt(kBadSubscript, 100, 2), resolve("MAIN.a]b[1"));
}

TEST_F(LabelGrammar, OpeningBracketAsLastCharacterHasAnEmptySubscript)
{
    passVariables({arrayOf(variable("a]b", 3, 100, 2), {10, 0, 9}), variable("c]d", 4, 50, 2),
                   arrayOf(variable("e]f", 3, 100, 2), {10, 0, 9, 0, 9})});
    EXPECT_EQ(failedAt(kBadSubscript, 100, 2), resolve("MAIN.a]b["));
    EXPECT_EQ((Resolution{kNoElement, 4, 50, 2}), resolve("MAIN.c]d["));
    EXPECT_EQ(failedAt(kNoElement, 100, 2), resolve("MAIN.e]f["));
}

TEST_F(LabelGrammar, EmptyBracketsCountAsASubscript)
{
    passSymbols({mainScope()});
    EXPECT_EQ((Resolution{kNoElement, 4, 10, 3}), resolve("MAIN.speed[]"));
    EXPECT_EQ(failedAt(kBadSubscript, 200, 3), resolve("MAIN.rec[].a"));
    EXPECT_EQ(failedAt(kNoElement, 100, 3), resolve("MAIN.tab[]"));
}

TEST_F(LabelGrammar, PartOfBracketsAloneHasAnEmptyName)
{
    passVariables({arrayOf(variable("", 3, 100, 2), {10, 0, 9})});
    EXPECT_EQ(resolved(3, 106, 2), resolve("MAIN.[3]"));
}

TEST_F(LabelGrammar, DotInsideBracketsSplitsTheLabel)
{
    passSymbols({mainScope()});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.rec[1.5].a"));
}

TEST_F(LabelGrammar, ScopeSubscriptMayBeAnything)
{
    passSymbols({mainScope()});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN[].speed"));
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN[x,y].speed"));
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN[1]x.speed"));
    EXPECT_EQ(failed(kNoScope), resolve("MAIN[1][2].speed"));
}

TEST_F(LabelGrammar, PartsAfterABasicTypeAreNotLookedAt)
{
    passSymbols({mainScope()});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.speed."));
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.speed.[.].a[9]x"));
    EXPECT_EQ(resolved(3, 120, 3), resolve("MAIN.tab[2,3].b"));
    EXPECT_EQ(resolved(2, 234, 3), resolve("MAIN.rec[3].flags[2].x.y.z"));
    EXPECT_EQ((Resolution{kNoElement, 4, 10, 3}), resolve("MAIN.speed[1].x"));
}

TEST_F(LabelGrammar, HundredThousandPartsAreTakenInStride)
{
    passSymbols({mainScope()});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.speed" + QString(".x").repeated(100000)));
    EXPECT_EQ(failed(kNoScope), resolve(QString(".").repeated(100000)));
}

TEST_F(LabelGrammar, NamesOfAHundredThousandCharactersMatch)
{
    const QString longName = QString("n").repeated(100000);
    passSymbols({scope(longName, {variable(longName, 4, 6, 2)})});
    EXPECT_EQ(resolved(4, 6, 2), resolve(longName + "." + longName));
    EXPECT_EQ(failed(kNoElement), resolve(longName + "." + longName + "n"));
}

// --- Scopes and their variables ---

TEST_F(ScopeLookup, WithoutSymbolsNoScopeIsKnown)
{
    EXPECT_EQ(failed(kNoScope), resolve("MAIN.speed"));
}

TEST_F(ScopeLookup, ScopeWithoutTypeIsReported)
{
    Label_Type_Info bare;
    bare.name = "MAIN";
    bare.members.append(variable("speed", 4, 10, 3));
    bare.memberCount = 1;
    passSymbols({bare});
    EXPECT_EQ(failed(kScopeWithoutType), resolve("MAIN.speed"));
    EXPECT_EQ(failed(kScopeWithoutType), resolve("MAIN."));
}

TEST_F(ScopeLookup, OnlyTheFirstTypeRecordIsSearched)
{
    Label_Type_Info record = scope("MAIN", {variable("speed", 4, 10, 3)});
    record.typeDef.append(scope("", {variable("torque", 5, 20, 3)}).typeDef.at(0));
    passSymbols({record});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.speed"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.torque"));
}

TEST_F(ScopeLookup, ScopeWithoutVariablesHasNone)
{
    passVariables({});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.speed"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN."));
}

TEST_F(ScopeLookup, MemberCountOfZeroHidesAllVariables)
{
    Label_Type_Info record = scope("MAIN", {variable("speed", 4, 10, 3)});
    record.typeDef[0].memberCount = 0;
    passSymbols({record});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.speed"));
}

TEST_F(ScopeLookup, VariablesBeyondTheMemberCountAreNotFound)
{
    Label_Type_Info record = scope(
        "MAIN",
        {variable("first", 4, 10, 3), variable("second", 4, 20, 3), variable("third", 4, 30, 3)});
    record.typeDef[0].memberCount = 2;
    passSymbols({record});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.first"));
    EXPECT_EQ(resolved(4, 20, 3), resolve("MAIN.second"));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.third"));
}

TEST_F(ScopeLookup, MemberCountAboveTheListEndsWithTheList)
{
    for (quint32 count : {3u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Label_Type_Info record = scope("MAIN", {variable("a", 4, 10, 3), variable("b", 4, 20, 3)});
        record.typeDef[0].memberCount = count;
        passSymbols({record});
        EXPECT_EQ(resolved(4, 20, 3), resolve("MAIN.b")) << count;
        EXPECT_EQ(failed(kNoElement), resolve("MAIN.c")) << count;
    }
}

TEST_F(ScopeLookup, MemberCountWithoutMembersFindsNothing)
{
    Label_Type_Info record = scope("MAIN", {});
    record.typeDef[0].memberCount = 0xFFFFFFFF;
    passSymbols({record});
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.a"));
}

TEST_F(ScopeLookup, FirstOfEqualNamesWins)
{
    passVariables({variable("x", 4, 10, 3), variable("y", 1, 0, 1), variable("x", 5, 20, 4)});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.x"));
}

TEST_F(ScopeLookup, VariableWithoutAreaIsReported)
{
    Label_Type_Info homeless = variable("x", 4, 10);
    homeless.areaInfo.clear();
    passVariables({homeless, variable("x", 4, 20, 3)});
    EXPECT_EQ(failed(kVariableWithoutArea), resolve("MAIN.x"));
    EXPECT_EQ(failed(kVariableWithoutArea), resolve("MAIN.x[1]"));
    EXPECT_EQ(failed(kVariableWithoutArea), resolve("MAIN.x.y"));
}

TEST_F(ScopeLookup, OnlyTheFirstAreaNumberCounts)
{
    Label_Type_Info record = variable("x", 4, 10, 3);
    record.areaInfo = {7, 8, 9};
    passVariables({record, variable("y", 4, 20, -1), variable("z", 4, 30, INT_MAX)});
    EXPECT_EQ(resolved(4, 10, 7), resolve("MAIN.x"));
    EXPECT_EQ(resolved(4, 20, -1), resolve("MAIN.y"));
    EXPECT_EQ(resolved(4, 30, INT_MAX), resolve("MAIN.z"));
}

TEST_F(ScopeLookup, AreaOfAStructureMemberIsNotLookedAt)
{
    Label_Type_Info member = variable("b", 5, 4, 99);
    Label_Type_Info homeless = variable("c", 5, 6);
    homeless.areaInfo.clear();
    passVariables({structured("v", 40, structure(8, {member, homeless}), 3)});
    EXPECT_EQ(resolved(5, 44, 3), resolve("MAIN.v.b"));
    EXPECT_EQ(resolved(5, 46, 3), resolve("MAIN.v.c"));
}

TEST_F(ScopeLookup, FlagsOfTheScopeRecordAreNotLookedAt)
{
    Label_Type_Info record = scope("MAIN", {variable("speed", 4, 10, 3)});
    record.typeFlags = 0x30C;
    record.offset = 1000;
    record.typeDef[0].typeFlags = 0x30C;
    record.typeDef[0].offset = 1000;
    passSymbols({record});
    EXPECT_EQ(resolved(4, 10, 3), resolve("MAIN.speed"));
}

TEST_F(ScopeLookup, ScopesWithEqualVariableNamesAreKeptApart)
{
    passSymbols({scope("A", {variable("x", 3, 10, 1)}), scope("B", {variable("x", 4, 20, 2)})});
    EXPECT_EQ(resolved(3, 10, 1), resolve("A.x"));
    EXPECT_EQ(resolved(4, 20, 2), resolve("B.x"));
}

TEST_F(ScopeLookup, FiveThousandVariablesAreAllFound)
{
    QList<Label_Type_Info> variables;
    for (int i = 0; i < 5000; ++i)
        variables.append(variable(QString("v%1").arg(i), 4, i, 3));
    passVariables(variables);
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(resolved(4, i, 3), resolve(QString("MAIN.v%1").arg(i)));
    EXPECT_EQ(failed(kNoElement), resolve("MAIN.v5000"));
}

// --- Arrays ---

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

// --- Structures ---

TEST_F(StructureWalk, NestedStructuresAddTheirOffsets)
{
    const Label_Type_Info inner =
        structure(6, {variable("p", 3, 0), arrayOf(variable("q", 1, 2), {10, 1, 4})});
    const Label_Type_Info outer =
        structure(40, {variable("k", 9, 0), arrayOf(structured("in", 10, inner), {10, 0, 4})});
    passVariables({arrayOf(structured("v", 1000, outer, 5), {10, 0, 2})});
    EXPECT_EQ(resolved(9, 1080, 5), resolve("MAIN.v[2].k"));
    // 1000 + 2 * 40 + 10 + 3 * 6 + 0
    EXPECT_EQ(resolved(3, 1108, 5), resolve("MAIN.v[2].in[3].p"));
    // 1000 + 1 * 40 + 10 + 4 * 6 + 2 + 3 * 1
    EXPECT_EQ(resolved(1, 1079, 5), resolve("MAIN.v[1].in[4].q[4]"));
    EXPECT_EQ(failedAt(kNoElement, 1108, 5), resolve("MAIN.v[2].in[3]"));
    EXPECT_EQ(failedAt(kBadSubscript, 1090, 5), resolve("MAIN.v[2].in.p"));
}

TEST_F(StructureWalk, FirstOfEqualMembersWins)
{
    passVariables(
        {structured("v", 40, structure(8, {variable("b", 5, 4), variable("b", 6, 0)}), 2)});
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v.b"));
}

TEST_F(StructureWalk, StructureWithoutMembersHasNone)
{
    passVariables({structured("v", 40, structure(8, {}), 2)});
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v.b"));
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v."));
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v"));
}

TEST_F(StructureWalk, MemberCountOfZeroHidesAllMembers)
{
    Label_Type_Info definition = structure(8, {variable("b", 5, 4)});
    definition.memberCount = 0;
    passVariables({structured("v", 40, definition, 2)});
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v.b"));
}

TEST_F(StructureWalk, MembersBeyondTheMemberCountAreNotFound)
{
    Label_Type_Info definition = structure(8, {variable("b", 5, 4), variable("c", 5, 6)});
    definition.memberCount = 1;
    passVariables({structured("v", 40, definition, 2)});
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v.b"));
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v.c"));
}

TEST_F(StructureWalk, MemberCountAboveTheListEndsWithTheList)
{
    for (quint32 count : {2u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Label_Type_Info definition = structure(8, {variable("b", 5, 4)});
        definition.memberCount = count;
        Label_Type_Info bare = structure(8, {});
        bare.memberCount = count;
        passVariables({structured("v", 40, definition, 2), structured("w", 60, bare, 2)});
        EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v.b")) << count;
        EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.v.c")) << count;
        EXPECT_EQ(failedAt(kNoMember, 60, 2), resolve("MAIN.w.b")) << count;
    }
}

TEST_F(StructureWalk, StructuredVariableWithoutDefinitionIsNoElement)
{
    passVariables({variable("v", 12, 40, 2), arrayOf(variable("w", 12, 60, 2), {10, 0, 9})});
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v"));
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v.b"));
    EXPECT_EQ(failedAt(kNoElement, 40, 2), resolve("MAIN.v[1].b"));
    EXPECT_EQ(failedAt(kNoElement, 60, 2), resolve("MAIN.w[1].b"));
    EXPECT_EQ(failedAt(kBadSubscript, 60, 2), resolve("MAIN.w[x].b"));
}

TEST_F(StructureWalk, StructuredMemberWithoutDefinitionIsNoElement)
{
    passVariables({structured("v", 40, structure(8, {variable("m", 12, 4)}), 2)});
    EXPECT_EQ(failedAt(kNoElement, 44, 2), resolve("MAIN.v.m.b"));
}

TEST_F(StructureWalk, OnlyTheFirstDefinitionIsUsed)
{
    Label_Type_Info record =
        arrayOf(structured("v", 40, structure(8, {variable("b", 5, 4)}), 2), {10, 0, 9});
    record.typeDef.append(structure(100, {variable("c", 6, 0)}));
    passVariables({record});
    EXPECT_EQ(resolved(5, 52, 2), resolve("MAIN.v[1].b"));
    EXPECT_EQ(failedAt(kNoMember, 48, 2), resolve("MAIN.v[1].c"));
}

TEST_F(StructureWalk, DefinitionWithoutTheStructureFlagTakesThePartByItsCode)
{
    // The next part is resolved against the record whatever it is called.
    Label_Type_Info plain = variable("anything", 5, 6);
    passVariables({arrayOf(structured("v", 40, plain, 2), {10, 0, 9})});
    EXPECT_EQ(resolved(5, 40, 2), resolve("MAIN.v[0].x"));
    EXPECT_EQ(resolved(5, 52, 2), resolve("MAIN.v[2].x"));
    EXPECT_EQ((Resolution{kNoElement, 5, 52, 2}), resolve("MAIN.v[2].x[1]"));
    EXPECT_EQ(failedAt(kNoElement, 52, 2), resolve("MAIN.v[2]"));
}

TEST_F(StructureWalk, VariableThatIsItselfADefinitionFindsItsNameAmongItsMembers)
{
    Label_Type_Info record = structure(8, {variable("v", 5, 4), variable("w", 6, 0)});
    record.name = "v";
    record.offset = 40;
    record.areaInfo.append(2);
    passVariables({record});
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v"));
    EXPECT_EQ((Resolution{kNoElement, 5, 44, 2}), resolve("MAIN.v[1]"));
    record.name = "x";
    passVariables({record});
    EXPECT_EQ(failedAt(kNoMember, 40, 2), resolve("MAIN.x"));
}

TEST_F(StructureWalk, TypeCodeOfADefinitionIsNotLookedAt)
{
    Label_Type_Info definition = structure(8, {variable("b", 5, 4)});
    definition.typeFlags = quint16(definition.typeFlags | 4);
    passVariables({structured("v", 40, definition, 2)});
    EXPECT_EQ(resolved(5, 44, 2), resolve("MAIN.v.b"));
}

TEST_F(StructureWalk, DefinitionThatIsAnArrayChecksTheSubscriptThatItsMemberUses)
{
    Label_Type_Info definition =
        structure(8, {arrayOf(variable("b", 5, 4), {10, 0, 9}), variable("c", 5, 0)});
    definition = arrayOf(definition, {10, 2, 9});
    passVariables({structured("v", 40, definition, 2)});
    EXPECT_EQ(resolved(5, 56, 2), resolve("MAIN.v.b[3]"));
    EXPECT_EQ(failedAt(kBadSubscript, 40, 2), resolve("MAIN.v.b[1]"));
    EXPECT_EQ(failedAt(kBadSubscript, 40, 2), resolve("MAIN.v.b"));
    EXPECT_EQ((Resolution{kNoElement, 5, 40, 2}), resolve("MAIN.v.c[3]"));
}

TEST_F(StructureWalk, OffsetsAddModuloTwoToThe32)
{
    passVariables({structured("v", INT_MAX, structure(8, {variable("b", 5, 1)}), 2),
                   structured("w", INT_MIN, structure(8, {variable("b", 5, -1)}), 2)});
    EXPECT_EQ(resolved(5, INT_MIN, 2), resolve("MAIN.v.b"));
    EXPECT_EQ(resolved(5, INT_MAX, 2), resolve("MAIN.w.b"));
}

/// A structure of `depth` levels: member "m" at offset 1 of each leads to the next, the last is a
/// word.
Label_Type_Info nestedStructures(int depth)
{
    Label_Type_Info definition = structure(4, {variable("m", 3, 1)});
    for (int level = 1; level < depth; ++level)
        definition = structure(4, {structured("m", 1, definition)});
    return definition;
}

TEST_F(StructureWalk, TwoThousandLevelsAreWalked)
{
    const int depth = 2000;
    passVariables({structured("v", 0, nestedStructures(depth), 2)});
    EXPECT_EQ(resolved(3, depth, 2), resolve("MAIN.v" + QString(".m").repeated(depth)));
    EXPECT_EQ(failedAt(kNoElement, depth - 1, 2),
              resolve("MAIN.v" + QString(".m").repeated(depth - 1)));
    EXPECT_EQ(failedAt(kNoMember, depth - 1, 2),
              resolve("MAIN.v" + QString(".m").repeated(depth - 1) + ".x"));
}

TEST_F(StructureWalk, TwoThousandDefinitionsInsideOneAnotherAreWalked)
{
    const int depth = 2000;
    Label_Type_Info definition = variable("m", 3, 1);
    for (int level = 0; level < depth; ++level) {
        definition = structure(1, {definition});
        definition.name = "m";
    }
    passVariables({structured("v", 0, definition, 2)});
    // The innermost offset counts; of the definitions only those below the outermost do.
    EXPECT_EQ(resolved(3, depth, 2), resolve("MAIN.v.m"));
}

// --- One level of the walk by itself ---

TEST_F(PartWalk, AddsToTheAddressThatTheCallerLeft)
{
    ControlInformationM info = {9, 1000, 77};
    EXPECT_EQ(0,
              get_label_address_1(structure(8, {variable("b", 5, 4)}), QStringList("b"), 0, info));
    EXPECT_EQ(5, info.dataType);
    EXPECT_EQ(1004, info.address);
    EXPECT_EQ(77, info.areaIndex);
}

TEST_F(PartWalk, OffsetOfTheRecordItselfIsNotAdded)
{
    ControlInformationM info = {9, 1000, 77};
    EXPECT_EQ(0, get_label_address_1(variable("x", 4, 10, 3), QStringList("x"), 0, info));
    EXPECT_EQ(4, info.dataType);
    EXPECT_EQ(1000, info.address);
    EXPECT_EQ(77, info.areaIndex);
}

TEST_F(PartWalk, IndexOutsideThePartsIsNoElement)
{
    for (int index : {2, 3, INT_MAX, -1, INT_MIN}) {
        ControlInformationM info = {9, 1000, 77};
        const QStringList parts = QStringList() << "MAIN"
                                                << "x";
        EXPECT_EQ(1, get_label_address_1(variable("x", 4, 10, 3), parts, index, info)) << index;
        EXPECT_EQ(9, info.dataType);
        EXPECT_EQ(1000, info.address);
    }
    ControlInformationM info = {9, 1000, 77};
    EXPECT_EQ(1, get_label_address_1(variable("x", 4, 10, 3), QStringList(), 0, info));
}

TEST_F(PartWalk, StartsAtTheGivenPart)
{
    const Label_Type_Info record =
        structured("v", 40, structure(8, {arrayOf(variable("b", 5, 4), {10, 0, 9})}), 2);
    const QStringList parts = QStringList() << "a"
                                            << "b[9]"
                                            << "v"
                                            << "b[2]";
    ControlInformationM info = {9, 100, 77};
    EXPECT_EQ(0, get_label_address_1(record, parts, 2, info));
    EXPECT_EQ(5, info.dataType);
    EXPECT_EQ(112, info.address);
}

TEST_F(PartWalk, NameOfTheRecordIsNotCompared)
{
    ControlInformationM info = {9, 1000, 77};
    EXPECT_EQ(0, get_label_address_1(variable("x", 4, 10, 3), QStringList("other"), 0, info));
    EXPECT_EQ(4, info.dataType);
}

TEST_F(PartWalk, PartMayHoldADotWhenItIsHandedInWhole)
{
    ControlInformationM info = {9, 0, 77};
    const Label_Type_Info definition = structure(8, {variable("a.b", 5, 4)});
    EXPECT_EQ(0, get_label_address_1(definition, QStringList("a.b"), 0, info));
    EXPECT_EQ(4, info.address);
}

// --- Linear index ---

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

// --- Every label of random plants against a plain walker ---

/// The rules of resolution in their plainest form: strings are copied, lists searched in order.
class PlainResolver {
public:
    explicit PlainResolver(const QList<Label_Type_Info>& scopes) : m_scopes(scopes) {}

    Resolution resolve(const QString& label) const
    {
        Resolution out;
        out.result = walkLabel(label, out);
        return out;
    }

private:
    static bool cutSubscript(QString& part, QString& subscript)
    {
        if (!part.contains('[') || !part.contains(']'))
            return false;
        const int open = int(part.lastIndexOf('['));
        const int length = int(part.size()) - open - 2;
        subscript = length > 0 ? part.mid(open + 1, length) : QString();
        part = part.left(open);
        return true;
    }

    static int index(const QString& subscript, const Label_Type_Info& record, quint32& linear)
    {
        const QStringList pieces = subscript.split(',');
        const int count = record.dimCount;
        if (int(pieces.size()) != count || count < 1)
            return 1;
        if (record.arrayBounds.size() < 1 + 2 * count)
            return 1;
        const int base = record.arrayBounds.at(0);
        if (base != 0 && (base < 2 || base > 36))
            return 3;
        QList<quint32> distances;
        QList<quint32> extents;
        for (int k = 0; k < count; ++k) {
            bool converts = false;
            const qint64 value = pieces.at(k).toInt(&converts, base);
            const qint64 lower = record.arrayBounds.at(2 * k + 1);
            const qint64 upper = record.arrayBounds.at(2 * k + 2);
            if (!converts || value - lower < 0)
                return 3;
            distances.append(quint32(value - lower));
            extents.append(quint32(upper - lower));
        }
        linear = distances.at(count - 1);
        for (int d = 0; d <= count - 2; ++d) {
            quint32 stride = 1;
            for (int later = d + 1; later < count; ++later)
                stride = quint32(quint64(stride) * extents.at(later));
            linear = quint32(quint64(distances.at(d)) * stride + linear);
        }
        return 0;
    }

    static int elementSize(int code)
    {
        switch (code) {
            case 3:
            case 4:
            case 16:
                return 2;
            case 5:
            case 6:
            case 7:
            case 17:
                return 4;
            case 8:
            case 9:
                return 8;
            case 10:
            case 11:
                return 255;
            default:
                return 1;
        }
    }

    static void advance(Resolution& out, qint64 distance)
    {
        out.address = advanced(out.address, distance);
    }

    static int walk(const Label_Type_Info& record, const QStringList& parts, int position,
                    Resolution& out)
    {
        if (position >= int(parts.size()))
            return 1;
        QString name = parts.at(position);
        QString subscript;
        quint32 linear = 0;
        int result = cutSubscript(name, subscript) ? 1 : 0;
        if (record.typeFlags & 0x100) {
            result = index(subscript, record, linear);
            if (result != 0)
                return result;
        }
        if (record.typeFlags & 0x200) {
            for (quint32 k = 0; k < record.memberCount && k < quint32(record.members.size()); ++k) {
                const Label_Type_Info& member = record.members.at(int(k));
                if (member.name == name) {
                    advance(out, quint32(member.offset));
                    return walk(member, parts, position, out);
                }
            }
            return 7;
        }
        const int code = record.typeFlags & 0xFF;
        if (code == 0 || code > 17)
            return result;
        if (code == 12) {
            if (record.typeDef.isEmpty())
                return 1;
            advance(out, record.typeDef.at(0).offset * qint64(linear));
            return walk(record.typeDef.at(0), parts, position + 1, out);
        }
        out.dataType = code;
        advance(out, qint64(linear) * elementSize(code));
        return result;
    }

    int walkLabel(const QString& label, Resolution& out) const
    {
        if (label.isEmpty())
            return 6;
        const QStringList parts = label.split('.');
        if (parts.size() < 2)
            return 11;
        QString scopeName = parts.at(0);
        QString variableName = parts.at(1);
        QString ignored;
        cutSubscript(scopeName, ignored);
        cutSubscript(variableName, ignored);
        const Label_Type_Info* found = nullptr;
        for (const Label_Type_Info& candidate : m_scopes) {
            if (candidate.name == scopeName)
                found = &candidate;
        }
        if (!found)
            return 2;
        if (found->typeDef.isEmpty())
            return 10;
        const Label_Type_Info& type = found->typeDef.at(0);
        for (quint32 i = 0; i < type.memberCount && i < quint32(type.members.size()); ++i) {
            const Label_Type_Info& candidate = type.members.at(int(i));
            if (candidate.name != variableName)
                continue;
            if (candidate.areaInfo.isEmpty())
                return 12;
            out.areaIndex = candidate.areaInfo.at(0);
            out.address = candidate.offset;
            return walk(candidate, parts, 1, out);
        }
        return 1;
    }

    QList<Label_Type_Info> m_scopes;
};

/// Plants of few names, so that names repeat, and labels that mostly fit them.
class RandomPlant {
public:
    explicit RandomPlant(quint32 seed) : m_random(seed) {}

    QList<Label_Type_Info> scopes()
    {
        QList<Label_Type_Info> list;
        for (int i = m_random.between(1, 5); i > 0; --i) {
            Label_Type_Info record = scope(name(), records(0, m_random.below(7)));
            spoilCount(record.typeDef[0]);
            if (m_random.oneIn(20))
                record.typeDef.clear();
            list.append(record);
        }
        return list;
    }

    QString label(const QList<Label_Type_Info>& scopes)
    {
        if (m_random.oneIn(200))
            return QString();
        const Label_Type_Info& chosen = scopes.at(m_random.below(int(scopes.size())));
        QString text = m_random.oneIn(15) ? name() : chosen.name;
        if (m_random.oneIn(10))
            text += "[" + QString::number(m_random.below(3)) + "]";
        if (m_random.oneIn(50))
            return text;
        const Label_Type_Info* level = chosen.typeDef.isEmpty() ? nullptr : &chosen.typeDef.at(0);
        for (int depth = 0; depth < 6 && !m_random.oneIn(12); ++depth) {
            const Label_Type_Info* next = nullptr;
            if (level && !level->members.isEmpty() && !m_random.oneIn(12))
                next = &level->members.at(m_random.below(int(level->members.size())));
            text += "." + (next ? next->name : name());
            text += subscript(next);
            level = next && !next->typeDef.isEmpty() ? &next->typeDef.at(0) : nullptr;
            if (!level && m_random.below(3) != 0)
                break;
        }
        return text;
    }

private:
    QString name()
    {
        static const char* const names[] = {"", "a", "b", "c", "A", "ab", "x]y", "p[1]"};
        return names[m_random.below(m_random.oneIn(8) ? 8 : 4)];
    }

    int number()
    {
        static const int extremes[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX};
        return m_random.oneIn(10) ? extremes[m_random.below(7)] : m_random.between(-30, 300);
    }

    void spoilCount(Label_Type_Info& record)
    {
        if (m_random.oneIn(8))
            record.memberCount = quint32(number());
    }

    void makeArray(Label_Type_Info& record)
    {
        static const int bases[] = {10, 10, 10, 10, 0, 16, 2, 1, 37, -10};
        record.typeFlags = quint16(record.typeFlags | kArrayFlag);
        record.dimCount = m_random.oneIn(15) ? m_random.between(-1, 5) : m_random.between(1, 3);
        record.arrayBounds.append(bases[m_random.below(10)]);
        for (int i = 0; i < 2 * record.dimCount; ++i)
            record.arrayBounds.append(m_random.oneIn(12) ? number() : m_random.between(-2, 6));
        if (m_random.oneIn(15))
            record.arrayBounds.removeLast();
    }

    QList<Label_Type_Info> records(int level, int count)
    {
        QList<Label_Type_Info> list;
        for (int i = 0; i < count; ++i) {
            Label_Type_Info record = variable(name(), 0, number(), m_random.between(-2, 9));
            const bool deeper = level < 4 && m_random.below(3) == 0;
            record.typeFlags = quint16(deeper              ? 12
                                       : m_random.oneIn(9) ? m_random.below(256)
                                                           : m_random.below(19));
            if (deeper && !m_random.oneIn(20))
                record.typeDef.append(definition(level));
            if (m_random.below(3) == 0)
                makeArray(record);
            if (m_random.oneIn(25)) {
                record.typeFlags = quint16(record.typeFlags | kStructureFlag);
                record.members = records(4, 3);
                record.memberCount = 3;
            }
            if (m_random.oneIn(6))
                record.typeFlags = quint16(record.typeFlags | (m_random.below(64) << 10));
            if (m_random.oneIn(25))
                record.areaInfo.clear();
            list.append(record);
        }
        return list;
    }

    Label_Type_Info definition(int level)
    {
        Label_Type_Info record = structure(number(), records(level + 1, m_random.below(5)));
        spoilCount(record);
        if (m_random.oneIn(15))
            record.typeFlags = quint16(m_random.below(0x400));
        if (m_random.oneIn(25))
            makeArray(record);
        return record;
    }

    QString subscript(const Label_Type_Info* record)
    {
        const bool isArray = record && (record->typeFlags & kArrayFlag) != 0;
        if (isArray == m_random.oneIn(10))
            return QString();
        int dimensions = isArray && record->dimCount > 0 ? record->dimCount : 1;
        if (m_random.oneIn(12))
            dimensions = m_random.between(1, 4);
        QStringList pieces;
        for (int i = 0; i < dimensions; ++i)
            pieces.append(piece());
        QString text = "[" + pieces.join(",") + "]";
        if (m_random.oneIn(25))
            text.remove(m_random.below(int(text.size())), 1);
        if (m_random.oneIn(40))
            text += "x";
        return text;
    }

    QString piece()
    {
        if (m_random.oneIn(25))
            return "";
        if (m_random.oneIn(25))
            return "0x" + QString::number(m_random.below(30), 16);
        if (m_random.oneIn(25))
            return " " + QString::number(m_random.below(30)) + " ";
        return QString::number(m_random.oneIn(12) ? number() : m_random.between(-2, 8));
    }

    Random m_random;
};

TEST_F(RandomLabels, ResolveAsAPlainWalkerResolvesThem)
{
    int outcomes[13] = {};
    for (quint32 seed = 1; seed <= 400; ++seed) {
        RandomPlant plant(seed);
        const QList<Label_Type_Info> scopes = plant.scopes();
        forgetSymbols();
        passSymbols(scopes);
        const PlainResolver plain(scopes);
        for (int i = 0; i < 150; ++i) {
            const QString label = plant.label(scopes);
            const Resolution expected = plain.resolve(label);
            ASSERT_EQ(expected, resolve(label)) << label.toStdString() << ", seed " << seed;
            ++outcomes[expected.result];
        }
    }
    // The plants are worth the walk only when every outcome comes up.
    for (int result : {0, 1, 2, 3, 6, 7, 10, 11, 12})
        EXPECT_GT(outcomes[result], 20) << "result " << result;
}

TEST_F(RandomLabels, StayRightWhileTheTableIsFilledAgainAndAgain)
{
    RandomPlant plant(4711);
    QList<Label_Type_Info> history;
    for (int round = 0; round < 200; ++round) {
        const QList<Label_Type_Info> scopes = plant.scopes();
        passSymbols(scopes);
        history += scopes;
        const PlainResolver plain(history);
        for (int i = 0; i < 40; ++i) {
            const QString label = plant.label(history);
            ASSERT_EQ(plain.resolve(label), resolve(label)) << label.toStdString();
        }
    }
}

TEST_F(RandomLabels, TextOfBracketsCommasAndDotsResolvesAsAPlainWalkerResolvesIt)
{
    const QList<Label_Type_Info> scopes = {
        mainScope(), scope("", {variable("", 4, 10, 3), arrayOf(variable("a", 3, 9, 1), {10, 0, 9}),
                                arrayOf(structured("", 5, structure(7, {variable("a", 5, 1)}), 2),
                                        {10, 1, 4})})};
    passSymbols(scopes);
    const PlainResolver plain(scopes);
    Random random(99);
    const QString alphabet = "a12.[],-";
    for (int i = 0; i < 60000; ++i) {
        QString label = random.oneIn(2) ? "." : "MAIN.rec";
        for (int length = random.below(12); length > 0; --length)
            label += alphabet.at(random.below(int(alphabet.size())));
        PLC_driver.labels.prefetch(label); // whatever its text is, it changes nothing
        ASSERT_EQ(plain.resolve(label), resolve(label)) << label.toStdString();
    }
}

} // namespace
} // namespace test
} // namespace plc
