#include "tests/iec/iec_fixture.h"

#include "iec/description.h"

namespace plc::iec {
namespace test {
namespace {

/// The description of the variable `v`.
std::string described(const char* lines)
{
    return importGood((std::string("VAR_GLOBAL\n") + lines + "\nEND_VAR").c_str())
        .global("v")
        .description.toStdString();
}

TEST(Description, StandsBehindTheDeclaration)
{
    EXPECT_EQ("Line speed", described("v AT %MW0 : INT; (* Line speed *)\nw AT %MW9 : INT;"));
    EXPECT_EQ("Line speed", described("v AT %MW0 : INT := 5; // Line speed"));
    EXPECT_EQ("first second", described("v AT %MW0 : INT; (* first *) // second\n// third"));
}

TEST(Description, StandsInsideOfTheDeclaration)
{
    EXPECT_EQ("Line speed", described("v (* Line speed *) AT %MW0 : INT;").empty()
                                ? described("v AT %MW0 (* Line speed *) : INT;")
                                : described("v (* Line speed *) : INT;"));
    EXPECT_EQ("Line speed", described("v AT %MW0 : (* Line speed *) INT := 7;"));
}

TEST(Description, StandsDirectlyAboveTheDeclaration)
{
    EXPECT_EQ("Line speed", described("(* Line speed *)\nv AT %MW0 : INT;"));
    EXPECT_EQ("Line speed of all", described("// Line speed\n// of all\nv AT %MW0 : INT;"));
    EXPECT_EQ("Line speed of all", described("(* Line speed\n * of all\n *)\nv AT %MW0 : INT;"));
    EXPECT_EQ("Line speed", described("// Line speed\n{attribute 'monitoring'}\nv AT %MW0 : INT;"));
}

TEST(Description, WhatStandsBehindComesBeforeWhatStandsAbove)
{
    EXPECT_EQ("behind", described("// above\nv AT %MW0 : INT; // behind"));
}

TEST(Description, AnEmptyLineSeparates)
{
    EXPECT_EQ("", described("// Section\n\nv AT %MW0 : INT;"));
    EXPECT_EQ("near", described("// far\n\n// near\nv AT %MW0 : INT;"));
}

TEST(Description, WhatStandsBehindTheOneAboveBelongsToThat)
{
    EXPECT_EQ("", described("w AT %MW9 : INT; // of w\nv AT %MW0 : INT;"));
    EXPECT_EQ("", described("(* of the section *) // this too\n\nv AT %MW0 : INT;"));
}

TEST(Description, OrnamentsAndDirectivesAreNoDescription)
{
    EXPECT_EQ("", described("(*************)\nv AT %MW0 : INT; (* ------ *)"));
    EXPECT_EQ("", described("(* @GLOBAL_VARIABLE_LIST := Globals *)\nv AT %MW0 : INT;"));
    EXPECT_EQ("Speed", described("v AT %MW0 : INT; //!< Speed"));
    EXPECT_EQ("-5 to 5", described("v AT %MW0 : BOOL; // -5 to 5"));
}

TEST(Description, IsForAllNamesOfADeclaration)
{
    ImportOptions options;
    options.base = MemoryPlace{1, 0};
    const Imported imported = importGood("VAR_GLOBAL\na, b : INT; // both\nEND_VAR", options);
    EXPECT_EQ("both", imported.global("a").description.toStdString());
    EXPECT_EQ("both", imported.global("b").description.toStdString());
}

TEST(Description, EndsWithTheUnitOfANumber)
{
    const Imported imported = importGood(R"(VAR_GLOBAL
        a AT %MW0 : INT;   // Filling level [%]
        b AT %MD1 : REAL;  (* Flow [m³/h] *)
        c AT %MB20 : BOOL; // Pump [M1]
        d AT %MB21 : STRING(5); // Name [text]
        e AT %MB30 : BYTE; // Range [0..5]
        f AT %MB31 : BYTE; // [rpm] of the fan
        g AT %MB32 : BYTE; // [rpm]
    END_VAR)");
    const auto unitAndText = [&](const char* name) {
        const project::Variable variable = imported.global(name);
        return variable.unit.toStdString() + "|" + variable.description.toStdString();
    };
    EXPECT_EQ("%|Filling level", unitAndText("a"));
    EXPECT_EQ("m³/h|Flow", unitAndText("b"));
    EXPECT_EQ("|Pump [M1]", unitAndText("c"));
    EXPECT_EQ("|Name [text]", unitAndText("d"));
    EXPECT_EQ("|Range [0..5]", unitAndText("e"));
    EXPECT_EQ("|[rpm] of the fan", unitAndText("f"));
    EXPECT_EQ("rpm|", unitAndText("g"));
}

TEST(Description, OfStructuresAndMembers)
{
    const Imported imported = importGood(R"(
        (* A process tank *)
        TYPE Tank : STRUCT
          level : REAL; // Filling level [%]
          (* Open *)
          valve : BOOL;
        END_STRUCT END_TYPE
        VAR_GLOBAL t AT %MB0 : Tank; END_VAR)");
    ASSERT_EQ(1, imported.result.project.structures.size());
    const project::StructureType& tank = *imported.result.project.structures.first();
    EXPECT_EQ("Filling level", tank.members[0].description.toStdString());
    EXPECT_EQ("%", tank.members[0].unit.toStdString());
    EXPECT_EQ("Open", tank.members[1].description.toStdString());
}

TEST(Description, IsCutWhenItIsVeryLong)
{
    const std::string text(2000, 'x');
    EXPECT_EQ(500, int(described(("v AT %MW0 : INT; // " + text).c_str()).size()));
}

} // namespace
} // namespace test
} // namespace plc::iec
