#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include "project/signal.h"
#include "tests/project/project_text.h"
#include "values/iec_types.h"

namespace plc::project {
namespace {

using test::goodProject;
using test::projectText;

TEST(ProjectFile, GivesDefaultsForWhatIsLeftOut)
{
    const Project project = goodProject(R"({"name": "n", "areas": [], "scopes": []})");
    EXPECT_EQ("127.0.0.1", project.address.toStdString());
    EXPECT_EQ(1200, project.port);
    EXPECT_EQ(200, project.settings.maxReadBytes);
    EXPECT_EQ(2, project.settings.retryLimit);
    EXPECT_EQ(3000, project.settings.connectTimeout);
    EXPECT_EQ(1000, project.settings.replyTimeout);
    EXPECT_EQ(500, project.settings.reconnectDelay);
    EXPECT_EQ(10000, project.settings.reconnectDelayLimit);
    EXPECT_EQ(3000, project.settings.staleAfter);
    EXPECT_FALSE(project.settings.readOnly);
    EXPECT_FALSE(project.settings.multiStation);
    EXPECT_TRUE(project.cyclic.isEmpty());
}

TEST(ProjectFile, ReadsPlcAndSettings)
{
    const Project project = goodProject(R"({
        "$schema": "x", "description": "d", "name": "Mixer",
        "plc": {"address": "plc.example", "port": 65535},
        "settings": {"maxReadBytes": 65528, "defaultStation": 255, "multiStation": true,
                     "retryLimit": 0, "connectTimeout": 1, "replyTimeout": 2,
                     "reconnectDelay": 3, "reconnectDelayLimit": 4, "staleAfter": 5,
                     "readOnly": true},
        "areas": [{"index": 65535, "size": 2147483647, "description": "all"}], "scopes": []})");
    EXPECT_EQ("Mixer", project.name.toStdString());
    EXPECT_EQ("plc.example", project.address.toStdString());
    EXPECT_EQ(65535, project.port);
    EXPECT_EQ(65528, project.settings.maxReadBytes);
    EXPECT_EQ(255, project.settings.defaultStation);
    EXPECT_TRUE(project.settings.multiStation);
    EXPECT_EQ(0, project.settings.retryLimit);
    EXPECT_EQ(1, project.settings.connectTimeout);
    EXPECT_EQ(2, project.settings.replyTimeout);
    EXPECT_EQ(3, project.settings.reconnectDelay);
    EXPECT_EQ(4, project.settings.reconnectDelayLimit);
    EXPECT_EQ(5, project.settings.staleAfter);
    EXPECT_TRUE(project.settings.readOnly);
    ASSERT_EQ(1, project.areas.size());
    EXPECT_EQ(65535, project.areas[0].index);
    EXPECT_EQ(2147483647, project.areas[0].size);
}

TEST(ProjectFile, ReadsAVariableWithAllItsKeys)
{
    const Project project = goodProject(projectText(
        R"({"name": "title", "type": "STRING", "area": 2, "offset": 7, "length": 9, "overlay": true,
            "unit": "-", "description": "d", "signal": {"kind": "constant", "value": "abc"}})"));
    const Variable& variable = project.scopes[0].variables[0];
    EXPECT_EQ("title", variable.name.toStdString());
    EXPECT_STREQ("STRING", variable.type->name);
    EXPECT_EQ(2, variable.area);
    EXPECT_EQ(7, variable.offset);
    EXPECT_EQ(9, variable.stringLength);
    EXPECT_TRUE(variable.overlay);
    EXPECT_EQ("-", variable.unit.toStdString());
    EXPECT_EQ("d", variable.description.toStdString());
    ASSERT_TRUE(variable.signal);
    EXPECT_EQ("constant", variable.signal->kind.toStdString());
    EXPECT_EQ("abc",
              variable.signal->parameters.value(QLatin1String("value")).toString().toStdString());
}

TEST(ProjectFile, PutsStructuresBehindThoseTheyAreMadeOf)
{
    const Project project = goodProject(projectText(
        R"({"name": "o", "type": "Outer", "area": 1, "offset": 0})",
        R"({"name": "Outer", "size": 8, "members": [{"name": "i", "type": "Inner", "offset": 2}]},
           {"name": "Inner", "size": 2, "members": [{"name": "a", "type": "INT", "offset": 0}]})"));
    ASSERT_EQ(2, project.structures.size());
    EXPECT_EQ("Inner", project.structures[0]->name.toStdString());
    EXPECT_EQ("Outer", project.structures[1]->name.toStdString());
    EXPECT_EQ(project.structures[1], project.scopes[0].variables[0].structure);
    EXPECT_EQ(project.structures[0], project.structures[1]->members[0].structure);
}

TEST(ProjectFile, AcceptsAScopeWithoutNameForGlobalVariables)
{
    const Project project = goodProject(
        R"({"name": "n", "areas": [{"index": 0, "size": 2}], "scopes": [{"name": "", "variables":
            [{"name": "go", "type": "BOOL", "area": 0, "offset": 0}]}], "cyclic": [".go"]})");
    EXPECT_EQ(".go", project.cyclic[0].label.toStdString());
}

TEST(ProjectFile, NestsStructuresSixteenDeepAndNoDeeper)
{
    const auto chain = [](int depth) {
        QByteArray structures =
            R"({"name": "S1", "size": 2, "members": [{"name": "m", "type": "INT", "offset": 0}]})";
        for (int level = 2; level <= depth; ++level) {
            structures += R"(, {"name": "S)" + QByteArray::number(level) +
                          R"(", "size": 2, "members": [{"name": "m", "type": "S)" +
                          QByteArray::number(level - 1) + R"(", "offset": 0}]})";
        }
        return projectText("", structures);
    };
    EXPECT_EQ("", test::errorOf(chain(16)));
    EXPECT_EQ("/structures/16/members/0/type: found structures nested more than 16 deep",
              test::errorOf(chain(17)));
}

TEST(ProjectFile, RefusesAChainOfStructuresInReverseOrderWithoutRecursingThroughIt)
{
    QByteArray structures;
    for (int level = 0; level < 20000; ++level) {
        structures += R"({"name": "S)" + QByteArray::number(level) +
                      R"(", "size": 2, "members": [{"name": "m", "type": "S)" +
                      QByteArray::number(level + 1) + R"(", "offset": 0}]},)";
    }
    structures += R"({"name": "S20000", "size": 2, "members":
                      [{"name": "m", "type": "INT", "offset": 0}]})";
    EXPECT_EQ("/structures/15/members/0/type: found structures nested more than 16 deep",
              test::errorOf(projectText("", structures)));
}

TEST(ProjectFile, ExpandsRangesOfCyclicLabelsWithTheLastRunningFastest)
{
    const Project project = goodProject(
        projectText(R"({"name": "t", "type": "S", "area": 1, "offset": 0, "array": [[1, 3]]})",
                    R"({"name": "S", "size": 8, "members":
            [{"name": "v", "type": "INT", "offset": 0, "array": [[-1, 0], [0, 1]]}]})",
                    R"("MAIN.t[2..3].v[-1,0..1]", {"label": "MAIN.t[1].v[0,0]", "elements": 2})"));
    QStringList labels;
    for (const CyclicLabel& cyclic : project.cyclic)
        labels.append(cyclic.label);
    EXPECT_EQ(
        "MAIN.t[2].v[-1,0] MAIN.t[2].v[-1,1] MAIN.t[3].v[-1,0] MAIN.t[3].v[-1,1] "
        "MAIN.t[1].v[0,0]",
        labels.join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ(2, project.cyclic[4].elements);
    EXPECT_EQ(1, project.cyclic[0].elements);
}

TEST(ProjectFile, GivesCyclicLabelsAStationWhereStationsDiffer)
{
    const Project project = goodProject(
        R"({"name": "n", "settings": {"multiStation": true}, "areas": [{"index": 0, "size": 2}],
            "scopes": [{"name": "M", "variables":
                [{"name": "go", "type": "BOOL", "area": 0, "offset": 0}]}],
            "cyclic": [{"label": "M.go", "station": 7}]})");
    EXPECT_EQ(7, project.cyclic[0].station);
}

TEST(ProjectFile, NamesLineAndColumnOfASyntaxError)
{
    const std::string error = test::errorOf("{\n  \"name\": \"\xc3\xa4\", nonsense\n}");
    EXPECT_EQ(0u, error.find("line 2, column 1")) << error;
    EXPECT_NE(std::string::npos, error.find("not JSON")) << error;
}

TEST(ProjectFile, RefusesEveryTruncationOfADocument)
{
    const QByteArray whole =
        projectText(R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[1, 3]]})",
                    "", R"("MAIN.a[1]")");
    for (int size = 0; size < int(whole.size()); ++size) {
        const Expected<Project> project = parseProject(whole.left(size), QStringLiteral("t"));
        ASSERT_FALSE(project) << size;
        ASSERT_FALSE(project.error().text.isEmpty()) << size;
    }
}

std::string loadErrorOf(const QString& path)
{
    const Expected<Project> project = loadProject(path);
    return project ? "" : project.error().text.toStdString();
}

TEST(LoadProject, ReadsAFile)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("p.json"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(projectText(""));
    file.close();
    const Expected<Project> project = loadProject(path);
    ASSERT_TRUE(project) << project.error().text.toStdString();
    EXPECT_EQ("test", project->name.toStdString());
}

TEST(LoadProject, NamesTheFileThatCannotBeRead)
{
    const std::string error = loadErrorOf(QStringLiteral("/nowhere/p.json"));
    EXPECT_EQ(0u, error.find("/nowhere/p.json: cannot be read: ")) << error;
    EXPECT_EQ("/tmp: is a folder, expected a project file", loadErrorOf(QStringLiteral("/tmp")));
}

TEST(LoadProject, RefusesAFileOf100MegabytesByItsSize)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("large.json"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(100 * 1000 * 1000));
    file.close();
    EXPECT_EQ(path.toStdString() + ": the file has more than 32 MiB; a project file has less",
              loadErrorOf(path));
}

TEST(LoadProject, StopsReadingADeviceThatNeverEnds)
{
    EXPECT_EQ("/dev/zero: the file has more than 32 MiB; a project file has less",
              loadErrorOf(QStringLiteral("/dev/zero")));
}

TEST(DemoPlant, ReadsAtLeast150LabelsInThreeAreas)
{
    const Expected<Project> project =
        loadProject(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
    ASSERT_TRUE(project) << project.error().text.toStdString();
    EXPECT_GE(project->cyclic.size(), 150);
    QSet<int> areas;
    QSet<QString> types;
    for (const ScopeDefinition& scope : project->scopes) {
        for (const Variable& variable : scope.variables) {
            areas.insert(variable.area);
            if (variable.type)
                types.insert(QLatin1String(variable.type->name));
        }
    }
    for (const auto& structure : project->structures) {
        for (const Variable& member : structure->members) {
            if (member.type)
                types.insert(QLatin1String(member.type->name));
        }
    }
    EXPECT_EQ(3, areas.size());
    for (const values::IecType* type = values::iecTypes(); type->name; ++type)
        EXPECT_TRUE(types.contains(QLatin1String(type->name))) << type->name;
}

} // namespace
} // namespace plc::project
