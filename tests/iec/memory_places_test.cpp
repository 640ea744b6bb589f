#include "tests/iec/iec_fixture.h"

namespace plc::iec {
namespace test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

ImportOptions withBase(int area, qint32 offset)
{
    ImportOptions options;
    options.base = MemoryPlace{area, offset};
    return options;
}

TEST(MemoryPlaces, ComeFromTheAddresses)
{
    const Imported imported = importVariables(
        "a AT %MB5 : BYTE; b AT %MW1.100 : INT; c AT %MD2.3 : REAL; d AT %MB1.7 : INT;");
    EXPECT_EQ("BYTE 0:5", imported.place("a"));
    EXPECT_EQ("INT 1:200", imported.place("b"));
    EXPECT_EQ("REAL 2:12", imported.place("c"));
    EXPECT_EQ("INT 1:7", imported.place("d"));
    ASSERT_EQ(3, imported.result.project.areas.size());
    EXPECT_EQ(6, imported.result.project.areas[0].size);
    EXPECT_EQ(202, imported.result.project.areas[1].size);
    EXPECT_EQ(16, imported.result.project.areas[2].size);
}

TEST(MemoryPlaces, AddressesWithoutAnAreaLieInTheDefaultOne)
{
    ImportOptions options;
    options.defaultArea = 3;
    const Imported imported =
        importGood("VAR_GLOBAL a AT %MW4 : INT; b AT %MW0.9 : INT; END_VAR", options);
    EXPECT_EQ("INT 3:8", imported.place("a"));
    EXPECT_EQ("INT 0:18", imported.place("b"));
}

TEST(MemoryPlaces, ABoolWithABitAddressIsABit)
{
    const Imported imported = importVariables(
        "a AT %MX12.3 : BOOL; b AT %MX1.13.3 : BOOL; c AT %MB14 : BOOL; d AT %MX20.5 : BIT;");
    EXPECT_EQ("BIT 0:203", imported.place("a")); // 16 * 12 + 8 + 3
    EXPECT_EQ("BIT 1:195", imported.place("b")); // 16 * 12 + 3
    EXPECT_EQ("BOOL 0:14", imported.place("c"));
    EXPECT_EQ("BIT 0:333", imported.place("d"));
}

TEST(MemoryPlaces, OtherTypesBeginWithAByte)
{
    EXPECT_EQ("INT 0:12", importVariables("a AT %MX12.0 : INT;").place("a"));
    EXPECT_EQ("BOOL[1..4] 0:12", importVariables("a AT %MX12.0 : ARRAY[1..4] OF BOOL;").place("a"));
    EXPECT_THAT(importVariables("a AT %MX12.1 : INT;").notes,
                ElementsAre("1:17: error: found bit 1 in \"%MX12.1\", expected bit 0: only a "
                            "single BOOL or BIT begins inside of a byte"));
    EXPECT_THAT(importVariables("a AT %MB12 : BIT;").notes,
                ElementsAre("1:17: error: found \"%MB12\" for a BIT, expected an address with a "
                            "bit, such as %MX12.3, or for up to 16 bits one of a word"));
}

TEST(MemoryPlaces, ABitArrayStaysInItsByte)
{
    EXPECT_EQ("BIT[1..3] 0:205", importVariables("a AT %MX12.5 : ARRAY[1..3] OF BIT;").place("a"));
    EXPECT_THAT(importVariables("a AT %MX12.5 : ARRAY[1..4] OF BIT;").notes,
                ElementsAre("1:17: error: found 4 bits from bit 5 on, expected bits of one byte"));
}

TEST(MemoryPlaces, ABitArrayMayBeAWord)
{
    EXPECT_EQ("BIT[0..15] 1:64", importVariables("a AT %MW1.2 : ARRAY[0..15] OF BIT;").place("a"));
    EXPECT_THAT(importVariables("a AT %MW1.2 : ARRAY[0..16] OF BIT;").notes,
                ElementsAre(HasSubstr("found \"%MW1.2\" for a BIT")));
}

TEST(MemoryPlaces, VariablesWithoutAnAddressAreLeftOutAndCounted)
{
    const Imported imported =
        importVariables("a : INT; b AT %MW1 : INT; timer : TON; c AT %IW5 : INT; d AT %M* : INT;");
    EXPECT_EQ(1, imported.result.variables);
    EXPECT_EQ(4, imported.result.leftOut);
    EXPECT_THAT(
        imported.notes,
        ElementsAre("1:12: warning: \"a\" is left out: it has no address; give it one with "
                    "AT, or let --base AREA:OFFSET place it",
                    HasSubstr("\"timer\" is left out: \"TON\" is a standard function block"),
                    HasSubstr("\"c\" is left out: inputs and outputs lie in no memory "
                              "area"),
                    HasSubstr("\"d\" is left out: its address is left to the controller")));
}

TEST(MemoryPlaces, FunctionBlocksAreNamedAsSuch)
{
    const Imported imported = importVariables(
        "a : Pump; b : ARRAY[1..3] OF r_trig; c : Missing; d AT %MB0 : INT;",
        "FUNCTION_BLOCK PUBLIC FINAL Pump EXTENDS Base VAR x : INT; END_VAR END_FUNCTION_BLOCK");
    EXPECT_THAT(
        imported.notes,
        ElementsAre(HasSubstr("\"a\" is left out: \"Pump\" is a function block, whose members are "
                              "not read; give those that you need variables of their own at %M "
                              "addresses"),
                    HasSubstr("\"b\" is left out: \"r_trig\" is a standard function block"),
                    HasSubstr("\"c\" is left out: its type \"Missing\" is not declared in these "
                              "files; import its declaration too")));
    EXPECT_EQ(3, imported.result.leftOut);
    EXPECT_THAT(
        importVariables("a AT %MB0 : T;", "TYPE T : STRUCT t : TON; END_STRUCT END_TYPE").notes,
        ElementsAre(HasSubstr("error: \"TON\" is a standard function block")));
}

TEST(MemoryPlaces, ConstantsNeedNone)
{
    const Imported imported = importGood(
        "VAR_GLOBAL CONSTANT n : INT := 5; t : TIME := T#5s; s AT %MW2 : INT := 7; END_VAR");
    EXPECT_THAT(imported.notes, IsEmpty());
    EXPECT_EQ(0, imported.result.leftOut);
    EXPECT_EQ("INT 0:4", imported.place("s"));
}

TEST(MemoryPlaces, ABasePlacesThemOneBehindTheOther)
{
    const Imported imported = importGood(R"(
        VAR_GLOBAL a : BOOL; b : INT; c : REAL; d : LREAL; e : STRING(2); f : T; g AT %MW0 : INT;
          h : BYTE; fb : TON; END_VAR
        TYPE T : STRUCT x : BYTE; y : INT; END_STRUCT END_TYPE)",
                                         withBase(2, 101));
    EXPECT_EQ("BOOL 2:101", imported.place("a"));
    EXPECT_EQ("INT 2:102", imported.place("b"));
    EXPECT_EQ("REAL 2:104", imported.place("c"));
    EXPECT_EQ("LREAL 2:108", imported.place("d"));
    EXPECT_EQ("STRING(2) 2:116", imported.place("e"));
    EXPECT_EQ("T 2:120", imported.place("f"));
    EXPECT_EQ("INT 0:0", imported.place("g"));
    EXPECT_EQ("BYTE 2:124", imported.place("h"));
    EXPECT_THAT(imported.notes,
                ElementsAre(HasSubstr("\"fb\" is left out: \"TON\" is a standard function block, "
                                      "whose members are not known; give those that you need "
                                      "variables of their own at %M addresses. Its size is not "
                                      "known, and what is placed behind it may lie elsewhere in "
                                      "the controller")));
}

TEST(MemoryPlaces, ABaseMustNotCoverAddresses)
{
    const Imported imported = importText(
        QStringLiteral("VAR_GLOBAL a : INT; b : INT; c AT %MW1.1 : INT; END_VAR"), withBase(1, 0));
    EXPECT_EQ(1, imported.errors);
    EXPECT_THAT(imported.notes, ElementsAre(HasSubstr("shares byte 2 of area 1 with")));
    EXPECT_THAT(imported.notes, ElementsAre(HasSubstr("choose another --base")));
}

TEST(MemoryPlaces, WhatLiesOverSomethingElseIsMarkedAndSaid)
{
    const Imported imported = importText(QStringLiteral(R"(VAR_GLOBAL
  bit3 AT %MX12.3 : BOOL;
  status AT %MW6 : WORD;
  next AT %MW7 : WORD;
END_VAR)"));
    EXPECT_THAT(imported.notes,
                ElementsAre("2:3: warning: \"bit3\" shares byte 12 of area 0 with \"status\" "
                            "(test.st:3); it is marked as an overlay"));
    EXPECT_TRUE(imported.global("bit3").overlay);
    EXPECT_FALSE(imported.global("status").overlay);
    EXPECT_FALSE(imported.global("next").overlay);
}

TEST(MemoryPlaces, NamesMayStandOnceInAScope)
{
    const Imported imported = importText(QStringLiteral(R"(VAR_GLOBAL a AT %MW0 : INT; END_VAR
VAR_GLOBAL A AT %MW1 : INT; END_VAR
PROGRAM P VAR a AT %MW2 : INT; END_VAR END_PROGRAM)"));
    EXPECT_THAT(imported.notes,
                ElementsAre("2:12: error: \"A\" is declared already, at test.st:1"));
}

TEST(MemoryPlaces, GlobalVariablesMayHaveAScopeOfTheirOwn)
{
    ImportOptions options;
    options.globalScope = QStringLiteral("GVL");
    const Imported imported = importGood("VAR_GLOBAL a AT %MW0 : INT; END_VAR", options);
    EXPECT_NE(nullptr, imported.find(QStringLiteral("GVL"), QStringLiteral("a")));
}

TEST(MemoryPlaces, EndWithTheirArea)
{
    EXPECT_THAT(importVariables("a AT %MB2147483640 : ARRAY[1..8] OF BYTE;").notes,
                ElementsAre("1:17: error: \"a\" reaches beyond byte 2147483647 of its area"));
    EXPECT_EQ("BYTE[1..7] 0:2147483640",
              importVariables("a AT %MB2147483640 : ARRAY[1..7] OF BYTE;").place("a"));
    EXPECT_THAT(importVariables("a AT %MX200000000.1 : BOOL;").notes,
                ElementsAre(HasSubstr("\"a\" reaches beyond byte")));
    EXPECT_THAT(importText(QStringLiteral("VAR_GLOBAL a : INT; b : ARRAY[1..1000000000] OF "
                                          "INT; c : ARRAY[1..100000000] OF INT; END_VAR"),
                           withBase(0, 0))
                    .notes,
                ElementsAre(HasSubstr("\"c\" reaches beyond byte")));
}

TEST(MemoryPlaces, ComeFromSeveralFilesTogether)
{
    const QVector<SourceFile> files{
        {QStringLiteral("main.st"), QStringLiteral("VAR_GLOBAL v AT %MB0 : ARRAY[1..n] OF T; "
                                                   "w AT %MB50 : X; END_VAR")},
        {QStringLiteral("types.st"), QStringLiteral("TYPE T : STRUCT a : INT; END_STRUCT END_TYPE\n"
                                                    "VAR_GLOBAL CONSTANT n : INT := 3; END_VAR")}};
    Diagnostics diagnostics;
    const ImportResult result = importDeclarations(files, {}, &diagnostics);
    ASSERT_EQ(1, result.variables);
    EXPECT_EQ("T[1..3]", Imported::typeText(result.project.scopes[0].variables[0]));
    ASSERT_EQ(1, diagnostics.errorCount());
    EXPECT_EQ(0, diagnostics.list()[0].position.file);
}

} // namespace
} // namespace test
} // namespace plc::iec
