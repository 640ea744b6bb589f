// What plc symbols shows besides its list, and comma-separated labels and values.

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kSymbolsProject[] = R"({
  'name': 'Symbols',
  'areas': [{'index': 3, 'size': 24}],
  'structures': [{'name': 'Pump', 'size': 4, 'members': [
    {'name': 'flow', 'type': 'INT', 'offset': 0, 'unit': 'l', 'description': 'Flow, actual'},
    {'name': 'on', 'type': 'BOOL', 'offset': 2}]}],
  'scopes': [{'name': 'MAIN', 'variables': [
    {'name': 'pump', 'type': 'Pump', 'area': 3, 'offset': 4, 'array': [[1, 2]]},
    {'name': 'table', 'type': 'INT', 'area': 3, 'offset': 12, 'array': [[0, 1], [1, 2]]},
    {'name': 'first', 'type': 'WORD', 'area': 3, 'offset': 12, 'overlay': true}]}]
})";

class Symbols : public Plant {
protected:
    Symbols() { writeProject(kSymbolsProject); }
    QString labelFile(const QByteArray& text) const
    {
        const QString path = projectPath() + QStringLiteral(".csv");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }
};

TEST_F(Symbols, AreShownAsATree)
{
    EXPECT_EQ((QStringList{
                  QStringLiteral("MAIN"),
                  QStringLiteral("├─ pump[1..2]: Pump, 2 × 4 bytes, area 3 address 4"),
                  QStringLiteral("│  ├─ flow: INT, 2 bytes, area 3 address 4, in l, Flow, actual"),
                  QStringLiteral("│  └─ on: BOOL, 1 byte, area 3 address 6"),
                  QStringLiteral("├─ table[0..1,1..2]: INT, 4 × 2 bytes, area 3 address 12"),
                  QStringLiteral("└─ first: WORD, 2 bytes, area 3 address 12, overlay")}),
              run("symbols", {QStringLiteral("--tree")}).lines);
    EXPECT_EQ((QStringList{QStringLiteral("MAIN"),
                           QStringLiteral("└─ pump[1..2]: Pump, 2 × 4 bytes, area 3 address 4")}),
              run("symbols", {QStringLiteral("--tree"), QStringLiteral("--depth"),
                              QStringLiteral("2"), QStringLiteral("*.FLOW")})
                  .lines);
}

TEST_F(Symbols, AreShownAsATreeInJson)
{
    const Outcome outcome = run(
        "symbols", {QStringLiteral("--tree"), QStringLiteral("--json"), QStringLiteral("flow")});
    ASSERT_EQ(3, outcome.lines.size()) << testing::PrintToString(outcome);
    EXPECT_EQ(R"({"level":1,"label":"MAIN"})", outcome.lines[0].toStdString());
    EXPECT_EQ(R"({"level":3,"label":"MAIN.pump[1..2].flow","type":"INT","elements":1,"size":2,)"
              R"("area":3,"address":4,"unit":"l","description":"Flow, actual"})",
              outcome.lines[2].toStdString());
}

TEST_F(Symbols, GoOutAndInAsCommaSeparatedValues)
{
    const Outcome outcome = run("symbols", {QStringLiteral("--csv")});
    EXPECT_EQ((QStringList{QStringLiteral("label,type,area,address,size,unit,description"),
                           QStringLiteral("MAIN.pump[1..2].flow,INT,3,4,2,l,\"Flow, actual\""),
                           QStringLiteral("MAIN.pump[1..2].on,BOOL,3,6,1,,"),
                           QStringLiteral("\"MAIN.table[0..1,1..2]\",INT,3,12,8,,"),
                           QStringLiteral("MAIN.first,WORD,3,12,2,,")}),
              outcome.lines);
    startSimulator();
    poke(3, 4, "0001000000020000");
    poke(3, 12, "000A000B000C000D");
    const QString labels = labelFile(outcome.lines.join(QLatin1Char('\n')).toUtf8());
    const Outcome values =
        run("read", {QStringLiteral("--labels"), labels, QStringLiteral("--csv")});
    EXPECT_EQ((QStringList{QStringLiteral("label,type,value,unit,outcome"),
                           QStringLiteral("MAIN.pump[1].flow,INT,1,l,done"),
                           QStringLiteral("MAIN.pump[2].flow,INT,2,l,done"),
                           QStringLiteral("MAIN.pump[1].on,BOOL,FALSE,,done"),
                           QStringLiteral("MAIN.pump[2].on,BOOL,FALSE,,done"),
                           QStringLiteral("\"MAIN.table[0,1]\",INT,10,,done"),
                           QStringLiteral("\"MAIN.table[0,2]\",INT,11,,done"),
                           QStringLiteral("\"MAIN.table[1,1]\",INT,12,,done"),
                           QStringLiteral("\"MAIN.table[1,2]\",INT,13,,done"),
                           QStringLiteral("MAIN.first,WORD,16#000A,,done")}),
              values.lines)
        << testing::PrintToString(values);
}

TEST_F(Symbols, LabelsOfAFileComeBehindThoseOfTheCommandLine)
{
    startSimulator();
    const QString labels = labelFile("label\nMAIN.first\n");
    const Outcome outcome =
        run("read", {QStringLiteral("MAIN.pump[1].on"), QStringLiteral("--labels"), labels});
    EXPECT_EQ((QStringList{QStringLiteral("MAIN.pump[1].on = FALSE"),
                           QStringLiteral("MAIN.first = 16#0000")}),
              outcome.lines)
        << testing::PrintToString(outcome);
    const Outcome wrong = run("run", {QStringLiteral("--once"), QStringLiteral("--labels"),
                                      labelFile("MAIN.first\nMAIN.fist\n")});
    EXPECT_EQ(2, wrong.exitCode);
    EXPECT_TRUE(wrong.errors.contains(QStringLiteral("line 2: label \"MAIN.fist\"")))
        << wrong.errors.toStdString();
}

TEST_F(Symbols, CheckListsOverlapsAndGaps)
{
    const Outcome outcome = run("symbols", {QStringLiteral("--check")});
    EXPECT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_EQ((QStringList{
                  QStringLiteral("area 3: MAIN.table and MAIN.first share byte 12, as an overlay"),
                  QStringLiteral("area 3: 4 bytes free from 0 to 3"),
                  QStringLiteral("area 3: 4 bytes free from 20 to 23")}),
              outcome.lines);
    EXPECT_EQ(
        1, run("symbols", {QStringLiteral("--check"), QStringLiteral("--gap"), QStringLiteral("5")})
               .lines.size());
}

TEST_F(Symbols, CheckHasExitCode1WhenAnOverlapIsNotMarked)
{
    writeProject(QByteArray(kSymbolsProject).replace(", 'overlay': true", ""));
    const Outcome outcome = run("symbols", {QStringLiteral("--check"), QStringLiteral("--json"),
                                            QStringLiteral("--gap"), QStringLiteral("99")});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_EQ((QStringList{QStringLiteral(R"({"found":"overlap","area":3,"byte":12,)"
                                          R"("first":"MAIN.table","second":"MAIN.first",)"
                                          R"("overlay":false})")}),
              outcome.lines);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("variables share memory at 1 place")))
        << outcome.errors.toStdString();
    // All other commands want the project to be right.
    EXPECT_EQ(2, run("symbols", {}).exitCode);
}

} // namespace
} // namespace plc::test
