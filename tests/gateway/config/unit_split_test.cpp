#include "gateway/config/unit_split.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gateway/config/settings.h"
#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

const char kPattern[] = R"({"devices": [{"name": "any", "project": "press.json", "cycle": "2s",
    "port": 1201, "labels": ["Plant.*"], "writable": [{"highest": 5, "labels": "Plant.a"}]}],
    "node": "Hall 1", "group": "G", "brokers": [{"port": 1884, "host": "b"}], "audit": "a.b/writes",
    "store": {"size": "3M", "file": "$STATE_DIRECTORY/changes.sqlite"},
    "metrics": {"listen": "127.0.0.1:9108"}, "status": "status.socket"})";

class UnitSplit : public plc::test::FileTest {
protected:
    UnitSplit()
    {
        task.pattern = kPattern;
        task.patternName = QStringLiteral("pattern.json");
        task.listName = QStringLiteral("plcs.csv");
    }
    /// A list of PLCs P1, P2, and so on.
    static QString listOf(int count)
    {
        QString list = QStringLiteral("name,address\n");
        for (int i = 1; i <= count; ++i)
            list += QStringLiteral("P%1,10.0.0.%1\n").arg(i);
        return list;
    }
    QVector<UnitConfiguration> units(const QString& list)
    {
        task.list = list;
        const Expected<QVector<UnitConfiguration>> split = splitUnits(task);
        EXPECT_TRUE(succeeds(split)) << error.toStdString();
        return split.valueOr({});
    }
    std::string errorOf(const char* list)
    {
        task.list = QString::fromUtf8(list);
        EXPECT_FALSE(succeeds(splitUnits(task)));
        return error.toStdString();
    }

    SplitTask task;
};

TEST_F(UnitSplit, HasTheLinesOfTheListInThePlaceOfThePattern)
{
    const QVector<UnitConfiguration> all =
        units(QStringLiteral("address,Name,port,project\n10.0.0.1,P 1,,\n,P 2,1300,other.json\n"));
    ASSERT_EQ(1, all.size());
    EXPECT_EQ("Hall-1-01.json", all[0].fileName.toStdString());
    EXPECT_EQ(all[0].json.toStdString(), R"({
  "group": "G",
  "node": "Hall 1-01",
  "brokers": [
    {"host": "b", "port": 1884}
  ],
  "store": {"file": "$STATE_DIRECTORY/changes.sqlite", "size": "3M"},
  "audit": "a.b/writes-01",
  "metrics": {"listen": "127.0.0.1:9108"},
  "status": "status-01.socket",
  "devices": [
    {"name": "P 1", "project": "press.json", "address": "10.0.0.1", "port": 1201, "labels": ["Plant.*"], "cycle": "2s", "writable": [{"labels": "Plant.a", "highest": 5}]},
    {"name": "P 2", "project": "other.json", "port": 1300, "labels": ["Plant.*"], "cycle": "2s", "writable": [{"labels": "Plant.a", "highest": 5}]}
  ]
}
)");
}

TEST_F(UnitSplit, CyclesAreMillisecondsOrDurations)
{
    const QVector<UnitConfiguration> all =
        units(QStringLiteral("name,cycle\nP1,250\nP2,3s\nP3,\n"));
    ASSERT_EQ(1, all.size());
    const Expected<GatewaySettings> settings = parseSettings(all[0].json, all[0].fileName);
    ASSERT_TRUE(settings);
    EXPECT_EQ(250, settings->devices[0].cycleTime);
    EXPECT_EQ(3000, settings->devices[1].cycleTime);
    EXPECT_EQ(2000, settings->devices[2].cycleTime);
}

TEST_F(UnitSplit, FiftyPlcsAreOneProcess)
{
    EXPECT_EQ(1, units(listOf(50)).size());
    const QVector<UnitConfiguration> all = units(listOf(101));
    ASSERT_EQ(3, all.size());
    EXPECT_EQ("Hall-1-03.json", all[2].fileName.toStdString());
    const Expected<GatewaySettings> second = parseSettings(all[1].json, all[1].fileName);
    ASSERT_TRUE(second);
    ASSERT_EQ(50, second->devices.size());
    EXPECT_EQ("P51", second->devices.first().name.toStdString());
    EXPECT_EQ("P100", second->devices.last().name.toStdString());
    EXPECT_EQ("Hall 1-02", second->node.toStdString());
    EXPECT_EQ(9109, second->metrics.port);
    EXPECT_EQ("a.b/writes-02", second->auditFile.toStdString());
    task.devices = 2;
    EXPECT_EQ(51, units(listOf(101)).size());
}

TEST_F(UnitSplit, PlcsAtTheEndLeaveTheOthersWhereTheyAre)
{
    const auto names = [](const UnitConfiguration& unit) {
        QStringList list;
        const Expected<GatewaySettings> settings = parseSettings(unit.json, unit.fileName);
        for (const DeviceSettings& device : settings.valueOr(GatewaySettings()).devices)
            list.append(device.name);
        return list;
    };
    const QVector<UnitConfiguration> before = units(listOf(75));
    const QVector<UnitConfiguration> after = units(listOf(120));
    EXPECT_EQ(before[0].json, after[0].json);
    ASSERT_EQ(25, names(before[1]).size());
    EXPECT_EQ(names(before[1]), names(after[1]).mid(0, 25));
}

TEST_F(UnitSplit, PathsLeadFromAnotherFolderToTheSameFiles)
{
    task.pattern.replace(R"({"port": 1884, "host": "b"})", R"({"host": "b", "user": "u",
        "passwordFile": "secret/p", "tls": {"authorities": "/etc/ca.pem", "certificate": "c.pem",
        "key": "$CREDENTIALS_DIRECTORY/key"}})");
    task.patternFolder = path("a/b");
    task.folder = path("c");
    const QVector<UnitConfiguration> all =
        units(QStringLiteral("name,project\nP1,\nP2,../two.json\nP3,/three.json\n"));
    ASSERT_EQ(1, all.size());
    const std::string json = all[0].json.toStdString();
    EXPECT_THAT(json, HasSubstr(R"("passwordFile": "../a/b/secret/p", "tls": {"authorities": )"
                                R"("/etc/ca.pem", "certificate": "../a/b/c.pem", "key": )"
                                R"("$CREDENTIALS_DIRECTORY/key"})"));
    EXPECT_THAT(json, HasSubstr(R"("name": "P1", "project": "../a/b/press.json")"));
    EXPECT_THAT(json, HasSubstr(R"("name": "P2", "project": "../a/two.json")"));
    EXPECT_THAT(json, HasSubstr(R"("name": "P3", "project": "/three.json")"));
    EXPECT_THAT(json, HasSubstr(R"("audit": "a.b/writes-01")")) << "it is the process's own";
}

TEST_F(UnitSplit, PathsLeadFromTheRealFolderBehindALink)
{
    ASSERT_TRUE(QDir().mkpath(path("deep/er")));
    ASSERT_TRUE(QFile::link(path("deep/er"), path("link")));
    task.patternFolder = path(".");
    task.folder = path("link");
    EXPECT_THAT(units(listOf(1))[0].json.toStdString(),
                HasSubstr(R"("project": "../../press.json")"));
}

TEST_F(UnitSplit, MistakesInTheListAreNamedWithTheirLine)
{
    EXPECT_EQ(
        "plcs.csv: line 1: unknown column \"adress\" (did you mean \"address\"?), expected "
        "some of name, project, address, port, cycle",
        errorOf("name,adress\n"));
    EXPECT_EQ("plcs.csv: line 1: column name is missing", errorOf("address\n1\n"));
    EXPECT_EQ("plcs.csv: line 1: column name stands there twice", errorOf("name,Name\n"));
    EXPECT_EQ("plcs.csv: found no PLC behind the line with the names of the columns",
              errorOf("name\n"));
    EXPECT_EQ("plcs.csv: line 3: found 1 fields, expected 2", errorOf("name,port\nP1,1\nP2\n"));
    EXPECT_EQ("plcs.csv: line 2: the name is empty", errorOf("name,port\n,1\n"));
    EXPECT_EQ("plcs.csv: line 4: \"p1\" is in line 2 already, perhaps in another case",
              errorOf("name\nP1\nP2\np1\n"));
    EXPECT_EQ(
        "Hall-1-01.json: /devices/0/port: found \"high\", expected a whole number from 1 to "
        "65535",
        errorOf("name,port\nP1,high\n"));
}

TEST_F(UnitSplit, ThePatternIsAConfigurationWithOneDevice)
{
    task.pattern.replace("\"group\"", "\"grup\"");
    EXPECT_THAT(errorOf("name\nP1\n"), HasSubstr("pattern.json: /grup: unknown key"));
    task.pattern = kPattern;
    task.pattern.replace("\"devices\": [", R"("devices": [{"name": "x", "project": "y"}, )");
    EXPECT_EQ(
        "pattern.json: /devices: found 2 devices, expected the one that all others are made "
        "after",
        errorOf("name\nP1\n"));
}

TEST_F(UnitSplit, APortForMetricsBeyondTheLastOneIsTold)
{
    task.pattern.replace("9108", "65535");
    task.devices = 1;
    EXPECT_THAT(errorOf("name\nP1\nP2\n"),
                HasSubstr("Hall-1-02.json: /metrics/listen: found \"127.0.0.1:65536\""));
}

TEST_F(UnitSplit, FilesAreReplacedOnlyOnRequest)
{
    const QString folder = path(".");
    task.devices = 1;
    Expected<UnitChanges> changes = writeUnits(units(listOf(2)), folder, false);
    ASSERT_TRUE(succeeds(changes)) << error.toStdString();
    EXPECT_EQ("Hall-1-01.json,Hall-1-02.json", changes->added.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ("Hall-1-01.json Hall-1-02.json", names());

    files.put(path("Hall-1-02.json"), "mine");
    files.put(path("Hall-1-99.json"), "old");
    files.put(path("Hall-2-01.json"), "another");
    EXPECT_FALSE(succeeds(writeUnits(units(listOf(3)), folder, false)));
    EXPECT_THAT(error.toStdString(),
                EndsWith("holds Hall-1-02.json with other content; nothing is written"));
    EXPECT_FALSE(QFile::exists(path("Hall-1-03.json")));

    changes = writeUnits(units(listOf(3)), folder, true);
    ASSERT_TRUE(succeeds(changes)) << error.toStdString();
    EXPECT_EQ("Hall-1-03.json", changes->added.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ("Hall-1-02.json", changes->replaced.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ("Hall-1-01.json", changes->unchanged.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ("Hall-1-99.json", changes->leftOver.join(QLatin1Char(',')).toStdString());
    EXPECT_EQ(units(listOf(3))[1].json.toStdString(), files.content(path("Hall-1-02.json")));
    EXPECT_EQ("old", files.content(path("Hall-1-99.json")));
}

TEST_F(UnitSplit, AFolderThatIsNotThereIsNamed)
{
    EXPECT_FALSE(succeeds(writeUnits(units(listOf(1)), path("none"), false)));
    EXPECT_THAT(error.toStdString(), EndsWith("none: is no folder"));
}

} // namespace
} // namespace test
} // namespace plc::gateway
