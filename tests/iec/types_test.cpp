#include "tests/iec/iec_fixture.h"

namespace plc::iec {
namespace test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The type text of a variable of this type.
std::string typed(const char* type, const char* types = "")
{
    const Imported imported =
        importVariables((std::string("v AT %MB0 : ") + type + ";").c_str(), types);
    return imported.errors > 0 ? imported.text() : Imported::typeText(imported.global("v"));
}

TEST(Types, AllElementaryOnesAreKnown)
{
    for (const values::IecType* type = values::iecTypes(); type->name; ++type) {
        if (!values::isText(*type) && !values::isBit(*type)) {
            EXPECT_EQ(type->name, typed(type->name));
        }
    }
    EXPECT_EQ("UDINT", typed("DATE"));
    EXPECT_EQ("UDINT", typed("DT"));
    EXPECT_EQ("TIME", typed("TOD"));
    EXPECT_EQ("ULINT", typed("LTIME"));
    EXPECT_EQ("DWORD", typed("POINTER TO INT"));
    EXPECT_EQ("DWORD", typed("REF_TO Missing"));
}

TEST(Types, TextsHoldAsManyCharactersAsDeclared)
{
    EXPECT_EQ("STRING(80)", typed("STRING"));
    EXPECT_EQ("STRING(12)", typed("STRING(12)"));
    EXPECT_EQ("STRING(12)", typed("string[12]"));
    EXPECT_EQ("WSTRING(7)", typed("WSTRING(3 + 4)"));
    EXPECT_THAT(typed("STRING(0)"), HasSubstr("1:31: error: found a length of 0, expected 1 to "
                                              "32000 characters"));
    EXPECT_THAT(typed("STRING(32001)"), HasSubstr("found a length of 32001"));
}

TEST(Types, AliasesAndSubrangesAreWhatTheyStandFor)
{
    EXPECT_EQ("REAL", typed("Temperature", "TYPE Temperature : Celsius; Celsius : REAL; END_TYPE"));
    EXPECT_EQ("INT", typed("INT (-5..100)"));
    EXPECT_EQ("UINT", typed("Level", "TYPE Level : UINT (0..100) := 5; END_TYPE"));
    EXPECT_EQ("STRING(9)", typed("ShortText", "TYPE ShortText : STRING(9); END_TYPE"));
    EXPECT_EQ("REAL", typed("Standard.Celsius", "TYPE Celsius : REAL; END_TYPE"));
}

TEST(Types, EnumerationsAreTheirBaseType)
{
    EXPECT_EQ("INT", typed("Mode", "TYPE Mode : (off, on) := off; END_TYPE"));
    EXPECT_EQ("USINT", typed("Mode", "TYPE Mode : (off, on := 5) USINT := off; END_TYPE"));
    EXPECT_EQ("DINT", typed("Mode", "TYPE Mode : DINT (off, on := 5); END_TYPE"));
    EXPECT_EQ("INT", typed("(red, green)"));
}

TEST(Types, ArraysOfArraysHaveTheDimensionsOfBoth)
{
    EXPECT_EQ("INT[0..3][1..5]", typed("ARRAY[0..3, 1..5] OF INT"));
    EXPECT_EQ("INT[0..3][1..5]", typed("ARRAY[0..3] OF ARRAY[1..5] OF INT"));
    EXPECT_EQ("INT[-2..2][1..5]",
              typed("ARRAY[-2..2] OF Row", "TYPE Row : ARRAY[1..5] OF INT; END_TYPE"));
}

TEST(Types, MembersLieAtMultiplesOfTheirSize)
{
    const Imported imported = importVariables("v AT %MB0 : ARRAY[1..2] OF Mixed;", R"(
        TYPE Mixed : STRUCT
          a : BOOL; b : INT; c : BYTE; d : REAL; e : LREAL; f : STRING(4); g : WSTRING(2);
          h : ARRAY[1..3] OF BYTE; i : UDINT; j : BOOL;
        END_STRUCT END_TYPE)");
    EXPECT_THAT(
        imported.members("Mixed"),
        ElementsAre("a BOOL 0", "b INT 2", "c BYTE 4", "d REAL 8", "e LREAL 12", "f STRING(4) 20",
                    "g WSTRING(2) 26", "h BYTE[1..3] 32", "i UDINT 36", "j BOOL 40", "size 44"));
}

TEST(Types, AlignmentOfTheControllerIsTheMost)
{
    const char* const source = R"(
        TYPE T : STRUCT a : BOOL; b : LREAL; c : INT; d : REAL; END_STRUCT END_TYPE
        VAR_GLOBAL v AT %MB0 : T; END_VAR)";
    ImportOptions options;
    options.alignment = 8;
    EXPECT_THAT(importGood(source, options).members("T"),
                ElementsAre("a BOOL 0", "b LREAL 8", "c INT 16", "d REAL 20", "size 24"));
    options.alignment = 2;
    EXPECT_THAT(importGood(source, options).members("T"),
                ElementsAre("a BOOL 0", "b LREAL 2", "c INT 10", "d REAL 12", "size 16"));
    options.alignment = 1;
    EXPECT_THAT(importGood(source, options).members("T"),
                ElementsAre("a BOOL 0", "b LREAL 1", "c INT 9", "d REAL 11", "size 15"));
}

TEST(Types, StructuresHoldStructuresInAnyOrderOfDeclaration)
{
    const Imported imported = importVariables("v AT %MB100 : Tank;", R"(
        TYPE Tank : STRUCT name : STRING(2); inlet : Valve; outlets : ARRAY[1..2] OF Valve;
          END_STRUCT
        Valve : STRUCT open : BOOL; position : REAL; END_STRUCT; END_TYPE)");
    EXPECT_THAT(imported.members("Tank"), ElementsAre("name STRING(2) 0", "inlet Valve 4",
                                                      "outlets Valve[1..2] 12", "size 28"));
    EXPECT_THAT(imported.members("Valve"), ElementsAre("open BOOL 0", "position REAL 4", "size 8"));
    // Valve stands first: the project's order is that of use.
    EXPECT_EQ("Valve", imported.result.project.structures.first()->name.toStdString());
}

TEST(Types, StructuresWithoutANameGetOne)
{
    const Imported imported = importVariables(
        "v AT %MB0 : STRUCT a : INT; END_STRUCT; w AT %MB10 : Outer; Inner AT %MB20 : ARRAY[1..2] "
        "OF STRUCT b : BYTE; END_STRUCT;",
        "TYPE Outer : STRUCT part : STRUCT x : INT; y : INT; END_STRUCT; END_STRUCT; "
        "Inner : INT; END_TYPE");
    EXPECT_EQ("v 0:0", imported.place("v"));
    EXPECT_THAT(imported.members("Outer"), ElementsAre("part Outer_part 0", "size 4"));
    EXPECT_EQ("Inner2[1..2] 0:20", imported.place("Inner"));
}

TEST(Types, UnionsLieOverEachOther)
{
    const Imported imported =
        importVariables("v AT %MB0 : Both;",
                        "TYPE Both : UNION bits : DWORD; parts : ARRAY[0..5] OF BYTE; "
                        "END_UNION END_TYPE");
    EXPECT_THAT(imported.members("Both"),
                ElementsAre("bits DWORD 0", "parts BYTE[0..5] 0", "size 8"));
    const project::StructureType& both = *imported.result.project.structures.first();
    EXPECT_FALSE(both.members[0].overlay);
    EXPECT_TRUE(both.members[1].overlay);
}

TEST(Types, AnExtendedStructureBeginsWithItsBase)
{
    const Imported imported = importVariables("v AT %MB0 : Pump;", R"(
        TYPE Motor : STRUCT speed : INT; on : BOOL; END_STRUCT END_TYPE
        TYPE Pump EXTENDS Motor : STRUCT flow : REAL; END_STRUCT END_TYPE)");
    EXPECT_THAT(imported.members("Pump"),
                ElementsAre("speed INT 0", "on BOOL 2", "flow REAL 4", "size 8"));
    EXPECT_THAT(typed("A", "TYPE A EXTENDS B : STRUCT x : INT; END_STRUCT B : INT; END_TYPE"),
                HasSubstr("\"B\" is no structure"));
}

TEST(Types, WhatNobodyUsesIsNotInTheProject)
{
    const Imported imported = importVariables("v AT %MB0 : Used;",
                                              "TYPE Used : STRUCT a : INT; END_STRUCT END_TYPE "
                                              "TYPE Unused : STRUCT t : TON; END_STRUCT END_TYPE");
    EXPECT_THAT(imported.notes, IsEmpty());
    EXPECT_EQ(1, imported.result.project.structures.size());
}

TEST(Types, StructuresThatContainThemselvesAreRefused)
{
    EXPECT_THAT(typed("A", "TYPE A : STRUCT a : A; END_STRUCT END_TYPE"),
                HasSubstr("error: type \"A\" contains itself: a > a"));
    EXPECT_THAT(typed("A",
                      "TYPE A : STRUCT b : ARRAY[1..2] OF B; END_STRUCT "
                      "B : STRUCT c : C; END_STRUCT C : A; END_TYPE"),
                HasSubstr("error: type \"A\" contains itself: a > b > c > a"));
    EXPECT_THAT(typed("A", "TYPE A : B; B : A; END_TYPE"), HasSubstr("contains itself: a > b > a"));
    // A pointer does not contain what it points to.
    EXPECT_EQ("A", typed("A", "TYPE A : STRUCT next : POINTER TO A; END_STRUCT END_TYPE"));
}

TEST(Types, WhatIsWrongInATypeIsSaidOnce)
{
    const Imported imported = importVariables(
        "v AT %MB0 : A; w AT %MB10 : A; x AT %MB20 : B;",
        "TYPE A : STRUCT a : Missing; END_STRUCT B : STRUCT a : A; END_STRUCT END_TYPE");
    EXPECT_EQ(1, imported.errors);
    EXPECT_THAT(imported.notes, ElementsAre(HasSubstr("found \"Missing\"")));
}

TEST(Types, DeclaredTwiceAreRefused)
{
    EXPECT_THAT(typed("A", "\nTYPE A : INT;\n a : REAL; END_TYPE"),
                HasSubstr("3:2: error: type \"a\" is declared in line 2 already"));
    EXPECT_THAT(typed("INT", "TYPE Int : REAL; END_TYPE"),
                HasSubstr("error: \"Int\" is the name of an elementary type"));
    EXPECT_THAT(typed("A", "TYPE A : STRUCT x : INT; X : INT; END_STRUCT END_TYPE"),
                HasSubstr("error: structure \"A\" has a member \"X\" already"));
}

TEST(Types, MembersThatNoProjectCanHaveAreRefused)
{
    EXPECT_THAT(typed("A", "TYPE A : STRUCT x : BIT; END_STRUCT END_TYPE"),
                HasSubstr("found BIT; members have byte offsets"));
    EXPECT_THAT(typed("A", "TYPE A : STRUCT x AT %MB0 : INT; END_STRUCT END_TYPE"),
                HasSubstr("members of structures have no addresses of their own"));
    EXPECT_THAT(typed("A", "TYPE A : STRUCT END_STRUCT END_TYPE"),
                HasSubstr("structure \"A\" has no members"));
}

TEST(Types, ArraysThatNoProjectCanHaveAreRefused)
{
    EXPECT_THAT(typed("ARRAY[5..4] OF INT"),
                HasSubstr("1:33: error: found the upper bound 4 below the lower bound 5"));
    EXPECT_THAT(typed("ARRAY[0..2147483647] OF INT"),
                HasSubstr("found the bound 2147483647, expected -2147483648 to 2147483646"));
    EXPECT_THAT(typed("ARRAY[0..1099511627776] OF INT"),
                HasSubstr("found the bound 1099511627776"));
    EXPECT_THAT(typed("ARRAY[0..999999, 0..999999] OF INT"),
                HasSubstr("found more than 2147483647 elements"));
    EXPECT_THAT(typed("ARRAY[0..999999999] OF LREAL"),
                HasSubstr("found an array of more than 2147483647 bytes"));
    EXPECT_THAT(typed("ARRAY[0..1,0..1,0..1,0..1,0..1,0..1,0..1,0..1,0..1] OF INT"),
                HasSubstr("found 9 dimensions, expected at most 8"));
    EXPECT_THAT(typed("ARRAY[*] OF INT"), HasSubstr("found an array of open length"));
}

TEST(Types, TextsOfAnArrayLie255BytesApart)
{
    EXPECT_EQ("STRING(254)[1..3]", typed("ARRAY[1..3] OF STRING(254)"));
    EXPECT_THAT(typed("ARRAY[1..3] OF STRING(255)"),
                HasSubstr("found texts of 256 bytes with the terminating zero"));
    EXPECT_THAT(importVariables("v AT %MB0 : ARRAY[1..3] OF STRING(19);").notes,
                ElementsAre("1:24: warning: the elements of a text array are taken to lie 255 "
                            "bytes apart, while one of these has 20; compare with the addresses in "
                            "the controller"));
}

TEST(Types, NestingHasAnEnd)
{
    std::string types = "TYPE S0 : STRUCT x : INT; END_STRUCT ";
    for (int i = 1; i <= 20; ++i)
        types +=
            "S" + std::to_string(i) + " : STRUCT x : S" + std::to_string(i - 1) + "; END_STRUCT ";
    types += "END_TYPE";
    EXPECT_EQ("S15", typed("S15", types.c_str()));
    EXPECT_THAT(typed("S16", types.c_str()),
                HasSubstr("found structures nested more than 16 deep"));
    EXPECT_THAT(typed("S20", types.c_str()),
                HasSubstr("found structures nested more than 16 deep"));
}

} // namespace
} // namespace test
} // namespace plc::iec
