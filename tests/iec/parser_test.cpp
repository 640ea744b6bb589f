#include "tests/iec/iec_fixture.h"

namespace plc::iec {
namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> notes(const char* source)
{
    return importText(QString::fromUtf8(source)).notes;
}

TEST(Parser, KeywordsMayHaveAnyCaseAndNamesKeepTheirs)
{
    const Imported imported = importGood(R"(
        var_global Retain myVar aT %mW3 : InT; End_Var
        Program Main var X at %MB9 : byte; end_var end_program)");
    EXPECT_EQ("INT 0:6", imported.place("myVar"));
    EXPECT_NE(nullptr, imported.find(QStringLiteral("Main"), QStringLiteral("X")));
    EXPECT_THAT(imported.notes, IsEmpty());
}

TEST(Parser, AProgramIsAScope)
{
    const Imported imported = importGood(R"(
        PROGRAM Filling
        VAR_INPUT start AT %MX0.0 : BOOL; END_VAR
        VAR_OUTPUT done AT %MX0.1 : BOOL; END_VAR
        VAR RETAIN PERSISTENT count AT %MW4 : UINT; END_VAR
        VAR_TEMP t AT %MW6 : INT; END_VAR
        VAR_IN_OUT u : Unknown; END_VAR
        VAR_EXTERNAL count : UINT; END_VAR
        IF start THEN done := count > 5; text := 'END_PROGRAM'; END_IF; (* END_PROGRAM *)
        FOR i := 1 TO 5 DO x[i] := {pragma} T#5s; END_FOR
        END_PROGRAM
        PROGRAM Other VAR v AT %MB20 : BYTE; END_VAR END_PROGRAM)");
    ASSERT_EQ(2, imported.result.project.scopes.size());
    EXPECT_EQ(3, imported.result.project.scopes[0].variables.size());
    EXPECT_NE(nullptr, imported.find(QStringLiteral("Filling"), QStringLiteral("count")));
    EXPECT_NE(nullptr, imported.find(QStringLiteral("Other"), QStringLiteral("v")));
    EXPECT_THAT(imported.notes, IsEmpty());
}

TEST(Parser, FunctionsAndTheFrameOfAConfigurationAreSkipped)
{
    const Imported imported = importGood(R"(
        FUNCTION_BLOCK Counter VAR n AT %MW99 : INT; END_VAR n := n + 1; END_FUNCTION_BLOCK
        FUNCTION Twice : INT VAR_INPUT x : INT; END_VAR Twice := 2 * x; END_FUNCTION
        CONFIGURATION Plant RESOURCE Cpu ON PM5650
        VAR_GLOBAL a AT %MB1 : BYTE; END_VAR
        TASK Fast (INTERVAL := T#10ms, PRIORITY := 1);
        PROGRAM Main WITH Fast : MainProgram;
        END_RESOURCE END_CONFIGURATION
        ACTION Reset: n := 0; END_ACTION)");
    EXPECT_EQ(1, imported.result.variables);
    EXPECT_EQ("BYTE 0:1", imported.place("a"));
    EXPECT_THAT(imported.notes, IsEmpty());
}

TEST(Parser, InitialValuesOfAllKindsAreSkipped)
{
    const Imported imported = importGood(R"(VAR_GLOBAL
        a AT %MB0 : BYTE := 16#FF;
        b AT %MB1 : STRING(20) := 'it$'s; END_VAR';
        c AT %MB30 : ARRAY[1..4] OF BYTE := [1, 2(7), 3];
        d AT %MB40 : ARRAY[1..4] OF BYTE := 4(0);
        e AT %MB50 : Point := (x := 1, y := (2 + 3) * 4);
        f AT %MB60 : ARRAY[1..2] OF Point := [(x := 1), (y := 2)];
        g AT %MD20 : REAL := -1.5E3;
        h AT %MD21 : TIME := T#1h5m;
        i AT %MB90 : INT (0..100) := 50;
        END_VAR
        TYPE Point : STRUCT x : INT := 1; y : INT := -1; END_STRUCT END_TYPE)");
    EXPECT_EQ(9, imported.result.variables);
    EXPECT_EQ("INT 0:90", imported.place("i"));
    EXPECT_EQ("Point[1..2] 0:60", imported.place("f"));
}

TEST(Parser, SaysWhatWasFoundAndWhatExpected)
{
    EXPECT_THAT(notes("VAR_GLOBAL\n  a AT %MW0 INT;\nEND_VAR"),
                ElementsAre("2:13: error: found \"INT\", expected \":\""));
    EXPECT_THAT(notes("VAR_GLOBAL\n  5a : INT;\nEND_VAR"),
                ElementsAre("2:3: error: found \"5\", expected a name"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT : INT; END_VAR"),
                ElementsAre("1:17: error: found \":\", expected an address such as %MW1.100"));
    EXPECT_THAT(notes("VAR_GLOBAL a, b AT %MW0 : INT; END_VAR"),
                ElementsAre("1:20: error: found \"%MW0\", expected one name before AT: variables "
                            "cannot share an address"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : ; END_VAR"),
                ElementsAre("1:24: error: found \";\", expected a type"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : INT := ; END_VAR"),
                ElementsAre("1:31: error: found \";\", expected an initial value"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : INT b AT %MW1 : INT; END_VAR"),
                ElementsAre("1:28: error: found \"b\", expected \";\" or an initial value"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : ARRAY 1..5 OF INT; END_VAR"),
                ElementsAre("1:30: error: found \"1\", expected \"[\""));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : ARRAY[1..5 OF INT; END_VAR"),
                ElementsAre("1:41: error: found \";\", expected \"]\""));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : ARRAY[1 5] OF INT; END_VAR"),
                ElementsAre("1:33: error: found \"]\", expected \"..\""));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : ARRAY[..5] OF INT; END_VAR"),
                ElementsAre("1:30: error: found \"..\", expected the lower bound"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : STRING[]; END_VAR"),
                ElementsAre("1:31: error: found \"]\", expected the length of the text"));
    EXPECT_THAT(notes("TYPE T STRUCT a : INT; END_STRUCT END_TYPE"),
                ElementsAre("1:8: error: found \"STRUCT\", expected \":\""));
    EXPECT_THAT(notes("TYPE T : (a, ); END_TYPE"),
                ElementsAre("1:14: error: found \")\", expected the name of a value"));
    EXPECT_THAT(notes("hello"),
                ElementsAre("1:1: error: found \"hello\", expected TYPE, VAR_GLOBAL or PROGRAM"));
}

TEST(Parser, SaysWhatIsMissingAtTheEnd)
{
    EXPECT_THAT(notes("VAR_GLOBAL\na AT %MW0 : INT;\n"),
                ElementsAre("3:1: error: found the end of the file, expected a declaration or "
                            "END_VAR for the VAR_GLOBAL of line 1"));
    EXPECT_THAT(notes("TYPE T : STRUCT a : INT;"),
                ElementsAre("1:25: error: found the end of the file, expected a member or "
                            "END_STRUCT for the STRUCT of line 1",
                            "1:25: error: found the end of the file, expected a type or END_TYPE "
                            "for the TYPE of line 1"));
    EXPECT_THAT(notes("PROGRAM P VAR a AT %MW0 : INT; END_VAR"),
                ElementsAre("1:9: warning: program P has no END_PROGRAM"));
    EXPECT_THAT(notes("FUNCTION_BLOCK F x := 1;"),
                ElementsAre("1:1: warning: FUNCTION_BLOCK has no END_FUNCTION_BLOCK; the rest of "
                            "the file was skipped"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MW0 : INT; (* open END_VAR"),
                ElementsAre("1:29: error: found a comment without an end, expected a name",
                            "1:44: error: found the end of the file, expected a declaration or "
                            "END_VAR for the VAR_GLOBAL of line 1"));
    EXPECT_THAT(notes("VAR_GLOBAL a AT %MB0 : STRING(5) := 'x;\n END_VAR"),
                ElementsAre("1:37: error: found a text without an end, expected an initial value"));
}

TEST(Parser, GoesOnBehindAnError)
{
    const Imported imported = importText(QStringLiteral(R"(
VAR_GLOBAL
  a AT %MW0 : INT
  b AT %MW1 : INT;
  c AT %MW2 : INT;
  d AT %MWx : INT;
  e AT %MW4 : BOLL;
  f AT %MW5 : INT;
END_VAR
TYPE T : STRUCT x INT; y : INT; END_STRUCT END_TYPE
VAR_GLOBAL g AT %MW6 : T; END_VAR)"));
    EXPECT_THAT(imported.notes,
                ElementsAre("4:3: error: found \"b\", expected \";\" or an initial value",
                            "10:19: error: found \"INT\", expected \":\"",
                            "6:8: error: found the address \"%MWx\", expected an address such as "
                            "%MB100, %MW1.100 or %MX12.3",
                            "7:15: error: found \"BOLL\", expected an elementary type or one that "
                            "these files declare (did you mean \"BOOL\"?)"));
    EXPECT_EQ("INT 0:4", imported.place("c"));
    EXPECT_EQ("INT 0:10", imported.place("f"));
    EXPECT_EQ("T 0:12", imported.place("g"));
}

TEST(Parser, AMissingEndOfASectionDoesNotHideTheNextOne)
{
    const Imported imported = importText(QStringLiteral(R"(
VAR_GLOBAL a AT %MW0 : INT;
VAR_GLOBAL b AT %MW1 : INT; END_VAR
TYPE T : INT;
VAR_GLOBAL c AT %MW2 : INT; END_VAR
PROGRAM P VAR d AT %MW3 : INT;
END_PROGRAM
VAR_GLOBAL e AT %MW4 : INT; END_VAR)"));
    EXPECT_EQ(3, imported.errors) << imported.text();
    EXPECT_EQ(5, imported.result.variables);
}

TEST(Parser, StopsAfterAHundredErrors)
{
    const QString lines = QStringLiteral("a : ;\n").repeated(500);
    const Imported imported = importText(QStringLiteral("VAR_GLOBAL\n%1END_VAR").arg(lines));
    EXPECT_EQ(100, imported.errors);
}

TEST(Parser, TellsHowFarItIs)
{
    const QString text = QStringLiteral("VAR_GLOBAL a AT %MW0 : INT; b AT %MW1 : INT; END_VAR");
    const QVector<SourceFile> files{
        {QStringLiteral("a.st"), text},
        {QStringLiteral("b.st"), QString()},
        {QStringLiteral("c.st"), QString(text)
                                     .replace(QLatin1String(" a "), QLatin1String(" c "))
                                     .replace(QLatin1String(" b "), QLatin1String(" d "))
                                     .replace(QLatin1String("%MW"), QLatin1String("%MW1"))}};
    Diagnostics diagnostics;
    QVector<qint64> places;
    importDeclarations(files, {}, &diagnostics, [&](qint64 done) { places.append(done); });
    // Behind the name that a declaration begins with.
    EXPECT_EQ((QVector<qint64>{12, 29, 52 + 12, 52 + 30}), places);
}

} // namespace
} // namespace test
} // namespace plc::iec
