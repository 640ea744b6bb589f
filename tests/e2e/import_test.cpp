// Declarations in structured text, from the file to a value that is read.

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kDeclarations[] = R"((* Filling line *)
TYPE Tank : STRUCT
    level : REAL; (* Filling level [%] *)
    open  : BOOL;
    inlet : ARRAY[1..2] OF INT;
END_STRUCT END_TYPE

VAR_GLOBAL CONSTANT tanks : INT := 3; END_VAR
VAR_GLOBAL
    count AT %MW1.0 : UINT; // Bottles
END_VAR
PROGRAM Line
VAR
    tank  AT %MB1.4  : ARRAY[1..tanks] OF Tank;
    ready AT %MX1.51.2 : BOOL;
    timer : TON;
END_VAR
END_PROGRAM
)";

class Import : public Plant {
protected:
    QString path(const char* name) const { return folder.filePath(QLatin1String(name)); }
    void write(const char* name, const QByteArray& text) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    /// `plc` with these arguments alone.
    static Outcome plc(const QStringList& arguments)
    {
        LineProcess process(QStringLiteral(PLC_HOST), arguments);
        Outcome outcome;
        outcome.exitCode = process.exitCode();
        outcome.lines = process.restOfOutput();
        outcome.errors = process.errors();
        return outcome;
    }

    QTemporaryDir folder;
};

TEST_F(Import, DeclaredVariablesAreReadFromAPlc)
{
    write("line.st", kDeclarations);
    const Outcome imported =
        plc({QStringLiteral("import"), path("line.st"), QStringLiteral("--output"), projectPath()});
    ASSERT_EQ(0, imported.exitCode) << testing::PrintToString(imported);
    EXPECT_TRUE(imported.lines.isEmpty());
    EXPECT_TRUE(imported.errors.contains(path("line.st") + QStringLiteral(":16:5: warning: ")))
        << imported.errors.toStdString();
    EXPECT_TRUE(imported.errors.contains(QStringLiteral("3 variables imported, 1 left out")));

    const Outcome symbols = run("symbols", {});
    EXPECT_EQ(
        (QStringList{QStringLiteral(".count: UINT, area 1 address 0, Bottles"),
                     QStringLiteral("Line.tank[1..3].level: REAL, area 1 address 4, in %, Filling "
                                    "level"),
                     QStringLiteral("Line.tank[1..3].open: BOOL, area 1 address 8"),
                     QStringLiteral("Line.tank[1..3].inlet[1..2]: INT, area 1 address 10"),
                     QStringLiteral("Line.ready: BIT, area 1 bit 802")}),
        symbols.lines)
        << testing::PrintToString(symbols);

    startSimulator();
    poke(1, 0, "0102");
    // Tank 2 lies 12 bytes behind tank 1: its level at 16, its second inlet at 24.
    poke(1, 16, "42280000");
    poke(1, 24, "FFFE");
    poke(1, 51, "04");
    const Outcome values =
        run("read", {QStringLiteral(".count"), QStringLiteral("Line.tank[2].level"),
                     QStringLiteral("Line.tank[2].inlet[2]"), QStringLiteral("Line.ready")});
    EXPECT_EQ(
        (QStringList{QStringLiteral(".count = 258"), QStringLiteral("Line.tank[2].level = 42 %"),
                     QStringLiteral("Line.tank[2].inlet[2] = -2"),
                     QStringLiteral("Line.ready = TRUE")}),
        values.lines)
        << testing::PrintToString(values);
}

TEST_F(Import, TheDemoPlantIsWhatItsDeclarationsSay)
{
    const Outcome imported =
        plc({QStringLiteral("import"), QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.st"),
             QStringLiteral("-o"), projectPath()});
    ASSERT_EQ(0, imported.exitCode) << testing::PrintToString(imported);
    const auto symbols = [](const QString& project) {
        return plc({QStringLiteral("symbols"), QStringLiteral("--csv"), QStringLiteral("-p"),
                    project, QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)})
            .lines;
    };
    const QStringList expected =
        symbols(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
    ASSERT_EQ(1 + 77, expected.size()) << "the names of the columns, and each value once";
    EXPECT_EQ(expected, symbols(projectPath()));
}

TEST_F(Import, MergesIntoAProjectAndKeepsTheRestOfIt)
{
    writeProject(R"({'name': 'Old', 'plc': {'port': 1234},
        'areas': [{'index': 1, 'size': 8}], 'scopes': [{'name': 'Line', 'variables': [
          {'name': 'ready', 'type': 'BOOL', 'area': 1, 'offset': 7, 'description': 'Go'}]}],
        'cyclic': ['Line.ready']})");
    write("line.st", kDeclarations);
    const Outcome imported =
        plc({QStringLiteral("import"), path("line.st"), QStringLiteral("--merge"), projectPath(),
             QStringLiteral("--output"), projectPath()});
    ASSERT_EQ(0, imported.exitCode) << testing::PrintToString(imported);
    const QJsonObject project = QJsonDocument::fromJson(read(projectPath())).object();
    EXPECT_EQ("Old", project.value(QLatin1String("name")).toString().toStdString());
    EXPECT_EQ(1234,
              project.value(QLatin1String("plc")).toObject().value(QLatin1String("port")).toInt());
    EXPECT_EQ((QStringList{QStringLiteral("Line.ready: BIT, area 1 bit 802, Go")}),
              run("symbols", {QStringLiteral("ready")}).lines);
}

TEST_F(Import, AnErrorIsShownInItsLineAndNothingIsWritten)
{
    write("line.st", "VAR_GLOBAL\n  speed AT %MW0 : INTT;\nEND_VAR\n");
    const Outcome outcome =
        plc({QStringLiteral("import"), path("line.st"), QStringLiteral("-o"), projectPath()});
    EXPECT_EQ(2, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(
        path("line.st") + QStringLiteral(":2:19: error: found \"INTT\", expected an elementary "
                                         "type or one that these files declare (did you mean "
                                         "\"INT\"?)\n  speed AT %MW0 : INTT;\n"
                                         "                  ^\n")))
        << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("1 error; nothing was written")));
    EXPECT_FALSE(QFile::exists(projectPath()));
}

TEST_F(Import, MistakesHaveExitCode2)
{
    write("empty.st", "");
    write("good.st", "VAR_GLOBAL a AT %MW0 : INT; END_VAR");
    write("plant.xml",
          "<?xml version=\"1.0\"?><project xmlns=\"http://www.plcopen.org/xml/tc6\"/>");
    write("plant.zip", "PK\x03\x04");
    const QString import = QStringLiteral("import");
    const QString good = path("good.st");
    const QVector<QPair<QStringList, QString>> mistakes{
        {{import}, QStringLiteral("plc import takes at least one file")},
        {{import, path("none.st")}, QStringLiteral("none.st: cannot be read: ")},
        {{import, folder.path()}, QStringLiteral("is a folder, expected a file")},
        {{import, good, path("plant.xml")},
         QStringLiteral("plant.xml: is a project in PLCopen XML; export the declarations as "
                        "structured text")},
        {{import, path("plant.zip")}, QStringLiteral("plant.zip: is a ZIP archive")},
        {{import, path("empty.st")}, QStringLiteral("no variable has an address")},
        {{import, good, QStringLiteral("--base"), QStringLiteral("5")},
         QStringLiteral("--base takes AREA:OFFSET such as 1:2000, not \"5\"")},
        {{import, good, QStringLiteral("--align"), QStringLiteral("3")},
         QStringLiteral("--align takes 1, 2, 4 or 8, not 3")},
        {{import, good, QStringLiteral("--scope"), QStringLiteral("a.b")},
         QStringLiteral("--scope takes a name without")},
        {{import, good, QStringLiteral("--merge"), path("none.json")},
         QStringLiteral("none.json: cannot be read: ")},
        {{import, good, QStringLiteral("--merge"), good}, QStringLiteral("not JSON")},
        {{import, good, QStringLiteral("-o"), path("no/folder.json")},
         QStringLiteral("no/folder.json: cannot be written: ")}};
    for (const auto& mistake : mistakes) {
        const Outcome outcome = plc(mistake.first);
        EXPECT_EQ(2, outcome.exitCode) << testing::PrintToString(outcome);
        EXPECT_TRUE(outcome.errors.contains(mistake.second)) << testing::PrintToString(outcome);
        EXPECT_TRUE(outcome.lines.isEmpty());
    }
}

TEST_F(Import, PackedStructuresAreReadWhereTheyLie)
{
    write("line.st", R"({attribute 'pack_mode' := '1'}
TYPE Dense : STRUCT open : BOOL; level : REAL; END_STRUCT END_TYPE
VAR_GLOBAL tank AT %MB1.0 : ARRAY[1..2] OF Dense; END_VAR
)");
    const Outcome imported =
        plc({QStringLiteral("import"), path("line.st"), QStringLiteral("-o"), projectPath()});
    ASSERT_EQ(0, imported.exitCode) << testing::PrintToString(imported);
    startSimulator();
    // The second tank begins at byte 5, its level behind one byte.
    poke(1, 5, "0142280000");
    const Outcome values = run("read", {QStringLiteral(".tank[2].level")});
    EXPECT_EQ(QStringList{QStringLiteral(".tank[2].level = 42")}, values.lines)
        << testing::PrintToString(values);
}

TEST_F(Import, WhatIsLeftOutIsCountedAndWhatChangesTheMeaningIsShown)
{
    QByteArray text = "VAR_GLOBAL\n";
    for (int i = 0; i < 25; ++i)
        text += "v" + QByteArray::number(i) + " : INT;\n";
    text += "word AT %MW0 : WORD; low AT %MB1 : BYTE;\nEND_VAR\n";
    write("line.st", text);
    const QStringList arguments{QStringLiteral("import"), path("line.st"), QStringLiteral("-o"),
                                projectPath()};
    const QString overlay = QStringLiteral("\"low\" shares byte 1 of area 0 with \"word\"");
    const QString last = QStringLiteral("\"v24\" is left out");
    const Outcome outcome = plc(arguments);
    EXPECT_TRUE(outcome.errors.contains(overlay)) << outcome.errors.toStdString();
    EXPECT_FALSE(outcome.errors.contains(last)) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(
        QStringLiteral("5 more left out without an address; --all-warnings shows each")))
        << outcome.errors.toStdString();
    const Outcome all = plc(arguments + QStringList{QStringLiteral("--all-warnings")});
    EXPECT_TRUE(all.errors.contains(overlay) && all.errors.contains(last))
        << all.errors.toStdString();
}

TEST_F(Import, PlacesVariablesFromABaseOnTheStandardOutput)
{
    write("good.st", "VAR_GLOBAL a : BYTE; b : INT; END_VAR");
    const Outcome outcome =
        plc({QStringLiteral("import"), path("good.st"), QStringLiteral("--base"),
             QStringLiteral("2:11"), QStringLiteral("--scope"), QStringLiteral("G"),
             QStringLiteral("--name"), QStringLiteral("Two")});
    ASSERT_EQ(0, outcome.exitCode) << testing::PrintToString(outcome);
    EXPECT_EQ(R"({
  "name": "Two",
  "areas": [
    {"index": 2, "size": 14}
  ],
  "scopes": [
    {"name": "G", "variables": [
      {"name": "a", "type": "BYTE", "area": 2, "offset": 11},
      {"name": "b", "type": "INT", "area": 2, "offset": 12}
    ]}
  ]
})",
              outcome.lines.join(QLatin1Char('\n')).toStdString());
}

} // namespace
} // namespace plc::test
