#include "gateway/config/device_points.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/runtime/runtime.h"
#include "setup/runtime_settings.h"
#include "tests/project/test_project.h"
#include "tests/support/built_driver.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::HasSubstr;

class DevicePointsTest : public ::testing::Test, host::RuntimeListener {
protected:
    DevicePointsTest() { settings.name = QStringLiteral("Press 1"); }

    void label(const char* text) { settings.labels.append(QString::fromUtf8(text)); }
    void deadband(const char* labels, double deadband)
    {
        settings.deadbands.append({QString::fromUtf8(labels), deadband});
    }
    void writable(const char* labels, std::optional<double> lowest = {},
                  std::optional<double> highest = {})
    {
        settings.writable.append({QString::fromUtf8(labels), lowest, highest});
    }
    Expected<DevicePoints> made()
    {
        const host::Runtime runtime(plc::test::takenDriver(),
                                    setup::runtimeSettings(project.settings, 1000), project, this);
        return devicePoints(settings, project, runtime.points());
    }
    DevicePoints good()
    {
        const Expected<DevicePoints> points = made();
        EXPECT_TRUE(points) << points.error().text.toStdString();
        return points.valueOr(DevicePoints());
    }
    std::string error()
    {
        const Expected<DevicePoints> points = made();
        return points ? "" : points.error().text.toStdString();
    }
    std::string names()
    {
        QString text;
        for (const Metric& metric : good().device.metrics)
            text += metric.name + QLatin1Char(' ');
        return text.trimmed().toStdString();
    }
    void readProject(const char* variables)
    {
        const Expected<project::Project> read =
            project::parseProject(QByteArray(R"({"name": "n", "areas": [{"index": 1, "size": 1000}],
                           "scopes": [{"name": "P", "variables": [)") +
                                      variables + "]}]}",
                                  QStringLiteral("p.json"));
        ASSERT_TRUE(read) << read.error().text.toStdString();
        project = *read;
    }

    project::Project project = project::test::testProject();
    DeviceSettings settings;
};

TEST_F(DevicePointsTest, AreWhatTheProjectReadsUnlessLabelsAreNamed)
{
    EXPECT_EQ("Main/speed", names());
    EXPECT_EQ("Press 1", good().device.name.toStdString());
    label("Main.long");
    EXPECT_EQ("Main/long", names());
}

TEST_F(DevicePointsTest, ArraysOfTheProjectAreOneValue)
{
    project.cyclic = {{QStringLiteral("Main.bytes[2]"), 3, 0}};
    const DevicePoints points = good();
    ASSERT_EQ(1, points.device.metrics.size());
    EXPECT_EQ("Main/bytes/2..4", points.device.metrics[0].name.toStdString());
    EXPECT_EQ(3, points.device.metrics[0].point.elements);
}

TEST_F(DevicePointsTest, PatternsRangesAndCountsStandForLabels)
{
    label("Main.axis[*].speed");
    EXPECT_EQ("Main/axis/1/speed Main/axis/2/speed Main/axis/3/speed Main/axis/4/speed", names());
    settings.labels = {QStringLiteral("Main.axis[2..3].position")};
    EXPECT_EQ("Main/axis/2/position Main/axis/3/position", names());
    settings.labels = {QStringLiteral("Main.bytes[0]*10")};
    EXPECT_EQ("Main/bytes/0..9", names());
}

TEST_F(DevicePointsTest, AValueIsPublishedOnce)
{
    label("Main.speed");
    label("Main.s*");
    EXPECT_EQ("Main/speed Main/small", names());
}

TEST_F(DevicePointsTest, ALabelThatFitsNothingIsNamed)
{
    label("Main.spead");
    EXPECT_THAT(error(), HasSubstr("device \"Press 1\": Main.spead: "));
    EXPECT_THAT(error(), HasSubstr("(did you mean \"speed\"?)"));
    settings.labels = {QStringLiteral("Main.x*")};
    EXPECT_THAT(error(), HasSubstr("device \"Press 1\": Main.x*: no label of the project matches"));
    settings.labels = {QStringLiteral("Main.bytes[0]*11")};
    EXPECT_THAT(error(), HasSubstr("only 10 element(s) of the array are left"));
}

TEST_F(DevicePointsTest, AProjectThatReadsNothingNeedsLabels)
{
    project.cyclic.clear();
    EXPECT_EQ("device \"Press 1\": its project reads nothing all the time; name \"labels\"",
              error());
}

TEST_F(DevicePointsTest, TheLastDeadbandThatFitsCounts)
{
    label("Main.*");
    deadband("Main.*", 2);
    deadband("Main.axis[2..3].position", 0.5);
    deadband("Main.speed", 0);
    for (const Metric& metric : good().device.metrics) {
        const std::string name = metric.name.toStdString();
        double expected = 2;
        if (name == "Main/axis/2/position" || name == "Main/axis/3/position")
            expected = 0.5;
        if (name == "Main/speed" || name == "Main/flag" || name == "Main/text" ||
            name == "Main/wide")
            expected = 0;
        EXPECT_EQ(expected, metric.deadband) << name;
        EXPECT_FALSE(metric.isWritable) << name;
    }
}

TEST_F(DevicePointsTest, ADeadbandIsForNumbersThatArePublished)
{
    label("Main.speed");
    label("Main.flag");
    deadband("Main.sped", 1);
    EXPECT_EQ(
        "device \"Press 1\": deadband: Main.sped is none of its values (did you mean "
        "\"Main.speed\"?)",
        error());
    settings.deadbands[0].labels = QStringLiteral("Main.l*");
    EXPECT_EQ("device \"Press 1\": deadband: Main.l* fits none of its values", error());
    settings.deadbands[0].labels = QStringLiteral("Main.flag");
    EXPECT_EQ("device \"Press 1\": deadband: Main.flag fits no number", error());
}

TEST_F(DevicePointsTest, TheLastLimitsThatFitCount)
{
    label("Main.axis[*].speed");
    label("Main.text");
    writable("Main.axis[*].speed", -10, 10);
    writable("Main.axis[4].speed", 0);
    writable("Main.text");
    const QVector<Metric> metrics = good().device.metrics;
    ASSERT_EQ(5, metrics.size());
    EXPECT_TRUE(metrics[0].isWritable);
    EXPECT_EQ(-10, metrics[0].limits.lowest.value_or(0));
    EXPECT_EQ(10, metrics[0].limits.highest.value_or(0));
    EXPECT_EQ(0, metrics[3].limits.lowest.value_or(1));
    EXPECT_FALSE(metrics[3].limits.highest);
    EXPECT_TRUE(metrics[4].isWritable);
    EXPECT_FALSE(metrics[4].limits.lowest);
}

TEST_F(DevicePointsTest, AnElementDoesNotMakeItsArrayWritable)
{
    label("Main.bytes[0]*10");
    label("Main.bytes[0]");
    writable("Main.bytes[0]");
    EXPECT_FALSE(good().device.metrics[0].isWritable);
    EXPECT_TRUE(good().device.metrics[1].isWritable);
    writable("Main.bytes[0]*10");
    EXPECT_TRUE(good().device.metrics[0].isWritable);
    settings.writable = {{QStringLiteral("Main.bytes[1]"), {}, {}}};
    EXPECT_THAT(error(), HasSubstr("writable: Main.bytes[1] is none of its values"));
}

TEST_F(DevicePointsTest, LimitsAreForNumbers)
{
    label("Main.flag");
    writable("Main.flag", 0, 1);
    EXPECT_EQ(
        "device \"Press 1\": writable: Main.flag is a BOOL and has no lowest or highest "
        "value; list it without",
        error());
}

TEST_F(DevicePointsTest, LimitsOfIntegersAreExact)
{
    label("Main.speed");
    writable("Main.speed", {}, 9007199254740994);
    EXPECT_EQ(
        "device \"Press 1\": writable: Main.speed is a INT, and a lowest or highest value beyond "
        "9007199254740992 is not exact",
        error());
    settings.writable = {{QStringLiteral("Main.speed"), {}, 9007199254740992}};
    EXPECT_EQ(9007199254740992, good().device.metrics[0].limits.highest.value_or(0));
}

TEST_F(DevicePointsTest, AReadOnlyProjectHasNothingWritable)
{
    project.settings.readOnly = true;
    writable("Main.speed");
    EXPECT_EQ("device \"Press 1\": writable: its project is read-only", error());
}

TEST_F(DevicePointsTest, NamesThatDifferInCaseAloneAreWarnedOf)
{
    readProject(R"({"name": "level", "type": "INT", "area": 1, "offset": 0},
                   {"name": "Level", "type": "INT", "area": 1, "offset": 2})");
    label("P.level");
    EXPECT_EQ(0, good().warnings.size());
    label("P.Level");
    ASSERT_EQ(1, good().warnings.size());
    EXPECT_EQ(
        "device \"Press 1\": P/level and P/Level differ only in upper and lower case, which "
        "some consumers do not tell apart",
        good().warnings[0].toStdString());
}

TEST_F(DevicePointsTest, ValuesOfOneNameAreRefused)
{
    readProject(R"({"name": "a", "type": "INT", "area": 1, "offset": 0, "array": [[1, 2]]},
                   {"name": "a/1", "type": "INT", "area": 1, "offset": 6})");
    label("P.a[1]");
    label("P.a/1");
    EXPECT_EQ("device \"Press 1\": P.a[1] and P.a/1 would both be called P/a/1", error());
}

TEST_F(DevicePointsTest, SignsOfTopicPatternsAreRefused)
{
    readProject(R"({"name": "a#", "type": "INT", "area": 1, "offset": 0})");
    label("P.a#");
    EXPECT_EQ("device \"Press 1\": P.a# has a + or a #, which names of values must not have",
              error());
}

TEST_F(DevicePointsTest, TenThousandAreEnough)
{
    project.cyclic.clear();
    readProject(R"({"name": "b", "type": "BYTE", "area": 1, "offset": 0, "array": [[0, 699]]})");
    label("P.b[0..699]");
    // Slices of two bytes, of three, and so on: values of their own.
    for (int count = 2; int(settings.labels.size()) < 9302; ++count) {
        for (int first = 0; first + count <= 700 && int(settings.labels.size()) < 9302; ++first)
            settings.labels.append(QStringLiteral("P.b[%1]*%2").arg(first).arg(count));
    }
    EXPECT_EQ("device \"Press 1\": it has more than 10000 values; name fewer labels", error());
    settings.labels.removeLast();
    EXPECT_EQ(10000, good().device.metrics.size());
}

} // namespace
} // namespace test
} // namespace plc::gateway
