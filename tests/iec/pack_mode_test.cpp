#include "tests/iec/iec_fixture.h"

namespace plc::iec {
namespace test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kMembers[] = "STRUCT a : BOOL; b : LREAL; c : BYTE; d : DINT; e : INT; END_STRUCT";

/// The members of a structure of kMembers with this pack_mode.
std::vector<std::string> packed(const char* value)
{
    const Imported imported =
        importText(QStringLiteral("{attribute 'pack_mode' := '%1'} TYPE T : %2 END_TYPE "
                                  "VAR_GLOBAL v AT %MB0 : T; END_VAR")
                       .arg(QString::fromLatin1(value), QString::fromLatin1(kMembers)));
    EXPECT_EQ("", imported.text());
    return imported.members("T");
}

TEST(PackMode, IsTheLargestAlignmentOfTheMembers)
{
    const auto dense =
        ElementsAre("a BOOL 0", "b LREAL 1", "c BYTE 9", "d DINT 10", "e INT 14", "size 16");
    EXPECT_THAT(packed("0"), dense);
    EXPECT_THAT(packed("1"), dense);
    EXPECT_THAT(packed("2"), ElementsAre("a BOOL 0", "b LREAL 2", "c BYTE 10", "d DINT 12",
                                         "e INT 16", "size 18"));
    EXPECT_THAT(packed("4"), ElementsAre("a BOOL 0", "b LREAL 4", "c BYTE 12", "d DINT 16",
                                         "e INT 20", "size 24"));
    EXPECT_THAT(packed("8"), ElementsAre("a BOOL 0", "b LREAL 8", "c BYTE 16", "d DINT 20",
                                         "e INT 24", "size 32"));
}

TEST(PackMode, EndsAPackedStructureWithItsLastByte)
{
    const Imported imported = importGood(R"(
        {attribute 'pack_mode' := '1'}
        TYPE Small : STRUCT a : INT; b : BYTE; END_STRUCT END_TYPE
        VAR_GLOBAL v AT %MB100 : ARRAY[1..3] OF Small; END_VAR)");
    EXPECT_THAT(imported.members("Small"), ElementsAre("a INT 0", "b BYTE 2", "size 3"));
    EXPECT_EQ(109, imported.result.project.areas[0].size) << "100 bytes, and three times three";
}

TEST(PackMode, OfAStructureIsThatOfItsOwnMembersOnly)
{
    // Aligned in packed: it keeps its gaps and lies at any byte. Packed in aligned: it has none and
    // lies at any byte as well.
    const Imported imported = importGood(R"(
        TYPE Aligned : STRUCT a : BYTE; b : DINT; END_STRUCT END_TYPE
        {attribute 'pack_mode' := '1'}
        TYPE Outer : STRUCT first : BYTE; inner : Aligned; last : INT; END_STRUCT END_TYPE
        {attribute 'pack_mode' := '1'}
        TYPE Dense : STRUCT a : BYTE; b : DINT; END_STRUCT END_TYPE
        TYPE Around : STRUCT first : BYTE; inner : Dense; last : INT; END_STRUCT END_TYPE
        VAR_GLOBAL v AT %MB0 : Outer; w AT %MB100 : Around; END_VAR)");
    EXPECT_THAT(imported.members("Aligned"), ElementsAre("a BYTE 0", "b DINT 4", "size 8"));
    EXPECT_THAT(imported.members("Outer"),
                ElementsAre("first BYTE 0", "inner Aligned 1", "last INT 9", "size 11"));
    EXPECT_THAT(imported.members("Dense"), ElementsAre("a BYTE 0", "b DINT 1", "size 5"));
    EXPECT_THAT(imported.members("Around"),
                ElementsAre("first BYTE 0", "inner Dense 1", "last INT 6", "size 8"));
}

TEST(PackMode, OfTheOuterStructureIsTheMostThatAnInnerOneGets)
{
    const Imported imported = importGood(R"(
        {attribute 'pack_mode' := '8'}
        TYPE Wide : STRUCT a : LREAL; END_STRUCT END_TYPE
        {attribute 'pack_mode' := '2'}
        TYPE Outer : STRUCT first : BYTE; inner : Wide; END_STRUCT END_TYPE
        TYPE Usual : STRUCT first : BYTE; inner : Wide; last : BYTE; END_STRUCT END_TYPE
        VAR_GLOBAL v AT %MB0 : Outer; w AT %MB100 : Usual; END_VAR)");
    EXPECT_THAT(imported.members("Outer"), ElementsAre("first BYTE 0", "inner Wide 2", "size 10"));
    EXPECT_THAT(imported.members("Usual"),
                ElementsAre("first BYTE 0", "inner Wide 4", "last BYTE 12", "size 16"));
}

TEST(PackMode, PlacesVariablesFromABaseByWhatIsLeftOfTheAlignment)
{
    ImportOptions options;
    options.base = MemoryPlace{1, 1};
    const Imported imported = importGood(R"(
        {attribute 'pack_mode' := '1'}
        TYPE Dense : STRUCT a : DINT; END_STRUCT END_TYPE
        {attribute 'pack_mode' := '8'}
        TYPE Wide : STRUCT a : LREAL; END_STRUCT END_TYPE
        VAR_GLOBAL v : Dense; w : Wide; x : LREAL; END_VAR)",
                                         options);
    EXPECT_EQ("Dense 1:1", imported.place("v"));
    EXPECT_EQ("Wide 1:8", imported.place("w"));
    EXPECT_EQ("LREAL 1:16", imported.place("x"));
}

TEST(PackMode, CountsForTextsUnionsAndExtendedStructures)
{
    const Imported imported = importGood(R"(
        {attribute 'pack_mode' := '1'}
        TYPE Texts : STRUCT a : BYTE; b : WSTRING(2); END_STRUCT END_TYPE
        {attribute 'pack_mode' := '1'}
        TYPE Both : UNION a : DINT; b : ARRAY[1..5] OF BYTE; END_UNION END_TYPE
        TYPE Base : STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE
        {attribute 'pack_mode' := '1'}
        TYPE More EXTENDS Base : STRUCT c : BYTE; d : DINT; END_STRUCT END_TYPE
        VAR_GLOBAL v AT %MB0 : Texts; w AT %MB100 : Both; x AT %MB200 : More; END_VAR)");
    EXPECT_THAT(imported.members("Texts"), ElementsAre("a BYTE 0", "b WSTRING(2) 1", "size 7"));
    EXPECT_THAT(imported.members("Both"), ElementsAre("a DINT 0", "b BYTE[1..5] 0", "size 5"));
    EXPECT_THAT(imported.members("More"),
                ElementsAre("a BYTE 0", "b INT 2", "c BYTE 4", "d DINT 5", "size 9"));
}

TEST(PackMode, StandsBeforeTheTypeItsNameOrTheStructure)
{
    for (const char* source :
         {"{attribute 'pack_mode' := '1'} TYPE T : STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE",
          "TYPE {attribute 'pack_mode' := '1'} T : STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE",
          "TYPE T : {ATTRIBUTE \"Pack_Mode\":=\"1\"} STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE",
          "{attribute 'hide'} { attribute  'pack_mode'  :=  '1' } (* dense *)\n"
          "TYPE T : STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE",
          "TYPE O : INT; {attribute 'pack_mode' := '0'} T : STRUCT a : BYTE; b : INT; "
          "END_STRUCT END_TYPE"}) {
        const Imported imported = importVariables("v AT %MB0 : T;", source);
        EXPECT_THAT(imported.notes, IsEmpty()) << source;
        EXPECT_THAT(imported.members("T"), ElementsAre("a BYTE 0", "b INT 1", "size 3")) << source;
    }
}

TEST(PackMode, CountsForAStructureInTheDeclarationOfAVariable)
{
    const Imported imported = importVariables(
        "{attribute 'pack_mode' := '1'} v AT %MB0 : ARRAY[1..2] OF STRUCT a : BYTE; b : STRUCT "
        "c : BYTE; d : INT; END_STRUCT; END_STRUCT;");
    EXPECT_THAT(imported.notes, IsEmpty());
    EXPECT_THAT(imported.members("v"), ElementsAre("a BYTE 0", "b v_b 1", "size 5"));
    EXPECT_THAT(imported.members("v_b"), ElementsAre("c BYTE 0", "d INT 2", "size 4"));
}

TEST(PackMode, OfAnUnknownValueIsToldAndSkipped)
{
    for (const char* value : {"3", "16", "", "one", "-1", "01"}) {
        const Imported imported = importText(
            QStringLiteral("{attribute 'pack_mode' := '%1'}\nTYPE T : STRUCT a : BYTE; b : INT; "
                           "END_STRUCT END_TYPE VAR_GLOBAL v AT %MB0 : T; END_VAR")
                .arg(QString::fromLatin1(value)));
        EXPECT_THAT(imported.notes,
                    ElementsAre("1:1: warning: found the pack_mode \"" + std::string(value) +
                                "\", expected 0, 1, 2, 4 or 8; it is skipped, and addresses may "
                                "differ"));
        EXPECT_THAT(imported.members("T"), ElementsAre("a BYTE 0", "b INT 2", "size 4"));
    }
}

TEST(PackMode, BeforeNoStructureIsTold)
{
    constexpr char kWarning[] = "warning: this pack_mode stands before no structure and is skipped";
    EXPECT_THAT(importVariables("{attribute 'pack_mode' := '1'} v AT %MB0 : INT;").notes,
                ElementsAre(HasSubstr(kWarning)));
    EXPECT_THAT(
        importGood("{attribute 'pack_mode' := '1'} VAR_GLOBAL v AT %MB0 : INT; END_VAR").notes,
        ElementsAre(HasSubstr(kWarning)));
    EXPECT_THAT(importGood("{attribute 'pack_mode' := '1'} TYPE A : INT; END_TYPE "
                           "VAR_GLOBAL v AT %MB0 : A; END_VAR")
                    .notes,
                ElementsAre(HasSubstr(kWarning)));
    const Imported second = importGood(
        "{attribute 'pack_mode' := '1'} TYPE A : STRUCT a : BYTE; b : INT; END_STRUCT; "
        "B : STRUCT a : BYTE; b : INT; END_STRUCT END_TYPE "
        "VAR_GLOBAL v AT %MB0 : A; w AT %MB10 : B; END_VAR");
    EXPECT_THAT(second.notes, ElementsAre(HasSubstr("counts for its first type alone")));
    EXPECT_THAT(second.members("A"), ElementsAre("a BYTE 0", "b INT 1", "size 3"));
    EXPECT_THAT(second.members("B"), ElementsAre("a BYTE 0", "b INT 2", "size 4"));
}

TEST(Pragmas, ThatMayMoveVariablesAreTold)
{
    EXPECT_THAT(
        importVariables("{attribute 'symbol' := 'read'} {region 'a'} v AT %MB0 : INT;").notes,
        IsEmpty());
    EXPECT_THAT(importVariables("{attribute 'relative_offset' := '4'} v AT %MB0 : INT;").notes,
                ElementsAre(HasSubstr("1:12: warning: this pragma is not known and skipped; by its "
                                      "name it may change addresses")));
    EXPECT_THAT(importVariables("{align 8} v AT %MB0 : INT;").notes,
                ElementsAre(HasSubstr("may change addresses")));
    EXPECT_THAT(importVariables("{IF defined (big)} v AT %MB0 : INT; {ELSE} w AT %MB4 : INT; "
                                "{END_IF}")
                    .notes,
                ElementsAre(HasSubstr("1:12: warning: conditions are not looked at")));
}

TEST(Pragmas, InStatementsAndFunctionBlocksAreNoMatter)
{
    EXPECT_THAT(importGood("{attribute 'pack_mode' := '1'} FUNCTION_BLOCK F VAR {align 8} a : INT; "
                           "END_VAR END_FUNCTION_BLOCK PROGRAM P VAR v AT %MB0 : INT; END_VAR "
                           "{IF defined (x)} v := 1; {END_IF} END_PROGRAM")
                    .notes,
                IsEmpty());
}

} // namespace
} // namespace test
} // namespace plc::iec
