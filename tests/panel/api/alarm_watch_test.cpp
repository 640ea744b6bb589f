#include "panel/api/alarm_watch.h"

#include <gtest/gtest.h>

#include "tests/support/file_test.h"

namespace plc::panel {
namespace test {
namespace {

using values::Value;

constexpr char kProject[] = R"json({
  "name": "A tank",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 1, "size": 100}],
  "scopes": [{"name": "T", "variables": [
    {"name": "set", "type": "INT", "area": 1, "offset": 0},
    {"name": "on", "type": "BOOL", "area": 1, "offset": 4},
    {"name": "text", "type": "STRING", "length": 7, "area": 1, "offset": 8},
    {"name": "list", "type": "INT", "array": [[1, 3]], "area": 1, "offset": 20}]}]})json";

class NoListener : public PlantListener {
    void sampled(Plant*, const QVector<int>&) override {}
    void linkChanged(Plant*) override {}
};

/// Alarms of a PLC, as they are checked before anything runs.
class AlarmWatchTest : public plc::test::FileTest {
protected:
    /// What is wrong with an alarm; empty: nothing is.
    std::string flaw(const char* label, AlarmSettings::Condition condition, const Value& state = {})
    {
        AlarmSettings alarm;
        alarm.plc = QStringLiteral("tank");
        alarm.label = QString::fromLatin1(label);
        alarm.condition = condition;
        alarm.limit = 80;
        alarm.state = state;
        PlcSettings settings;
        settings.name = alarm.plc;
        settings.project = path("tank.json");
        settings.alarms = {alarm};
        files.put(settings.project, kProject);
        const Expected<std::unique_ptr<Plant>> plant =
            Plant::create(settings, false, QStringLiteral(PLC_LIBRARY), &m_listener);
        if (!plant)
            qFatal("%s", qPrintable(plant.error().text));
        return succeeds(AlarmWatch::check(**plant)) ? std::string() : error.toStdString();
    }

private:
    NoListener m_listener;
};

TEST_F(AlarmWatchTest, AConditionFitsTheTypeOfItsValue)
{
    EXPECT_EQ("", flaw("T.set", AlarmSettings::Above));
    EXPECT_EQ("", flaw("T.list[2]", AlarmSettings::Below));
    EXPECT_EQ("", flaw("T.set", AlarmSettings::Is, Value(qint64(3))));
    EXPECT_EQ("", flaw("T.on", AlarmSettings::Is, Value(true)));
    EXPECT_EQ("", flaw("T.text", AlarmSettings::Is, Value(QStringLiteral("stop"))));
    EXPECT_EQ("", flaw("T.text", AlarmSettings::NotGood));
}

TEST_F(AlarmWatchTest, AConditionThatIsNeverSoIsAnError)
{
    EXPECT_EQ("tank: the alarm T.on above 80: the value is BOOL, which is never so",
              flaw("T.on", AlarmSettings::Above));
    EXPECT_EQ("tank: the alarm T.text below 80: the value is STRING, which is never so",
              flaw("T.text", AlarmSettings::Below));
    EXPECT_EQ("tank: the alarm T.set is TRUE: the value is INT, which is never so",
              flaw("T.set", AlarmSettings::Is, Value(true)));
    EXPECT_EQ("tank: the alarm T.on is 3: the value is BOOL, which is never so",
              flaw("T.on", AlarmSettings::Is, Value(qint64(3))));
    EXPECT_EQ("tank: the alarm T.set is 'stop': the value is INT, which is never so",
              flaw("T.set", AlarmSettings::Is, Value(QStringLiteral("stop"))));
}

TEST_F(AlarmWatchTest, AnAlarmIsOfOneValueThatThereIs)
{
    EXPECT_EQ(
        "tank: the alarm T.sett above 80: T.sett: scope \"T\" has no \"sett\" (did you mean"
        " \"set\"?)",
        flaw("T.sett", AlarmSettings::Above));
    EXPECT_EQ("tank: the alarm T.list[1]*2 above 80: expected one value, not several",
              flaw("T.list[1]*2", AlarmSettings::Above));
}

} // namespace
} // namespace test
} // namespace plc::panel
