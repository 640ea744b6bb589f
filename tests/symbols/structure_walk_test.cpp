#include "tests/symbols/label_fixture.h"

namespace plc::test {
namespace {

using StructureWalk = DriverTest;
using PartWalk = DriverTest;

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

} // namespace
} // namespace plc::test
