#include "tests/symbols/label_fixture.h"

namespace plc::test {
namespace {

using LabelGrammar = DriverTest;
using ScopeLookup = DriverTest;

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

constexpr WorkedLabel kWorkedLabels[] = {
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

} // namespace
} // namespace plc::test
