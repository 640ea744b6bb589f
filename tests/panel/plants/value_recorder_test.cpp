#include "panel/plants/value_recorder.h"

#include <gtest/gtest.h>

#include "recorder/reader.h"
#include "tests/support/file_test.h"

namespace plc::panel {
namespace test {
namespace {

constexpr char kProject[] = R"json({
  "name": "A tank",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 1, "size": 100}],
  "scopes": [{"name": "T", "variables": [
    {"name": "set", "type": "INT", "area": 1, "offset": 0},
    {"name": "real", "type": "REAL", "area": 1, "offset": 4},
    {"name": "text", "type": "STRING", "length": 7, "area": 1, "offset": 8}]}],
  "cyclic": ["T.set", "T.real", "T.text"]})json";

class NoListener : public PlantListener {
    void sampled(Plant*, const QVector<int>&) override {}
    void linkChanged(Plant*) override {}
};

/// Recordings of a PLC that is never connected.
class ValueRecorderTest : public plc::test::FileTest {
protected:
    std::unique_ptr<Plant> plant(const QVector<configuration::DeadbandRule>& deadbands = {})
    {
        PlcSettings settings;
        settings.name = QStringLiteral("tank");
        settings.project = path("tank.json");
        settings.deadbands = deadbands;
        files.put(settings.project, kProject);
        Expected<std::unique_ptr<Plant>> made =
            Plant::create(settings, false, QStringLiteral(PLC_LIBRARY), &m_listener);
        if (!made)
            qFatal("%s", qPrintable(made.error().text));
        return std::move(*made);
    }
    std::unique_ptr<ValueRecorder> start(qint64 time)
    {
        RecordSettings settings;
        settings.file = path("record");
        Expected<std::unique_ptr<ValueRecorder>> recorder = ValueRecorder::start(settings, time);
        EXPECT_TRUE(succeeds(recorder)) << error.toStdString();
        return recorder ? std::move(*recorder) : nullptr;
    }
    std::string deadbandError(const QVector<configuration::DeadbandRule>& deadbands)
    {
        return succeeds(ValueRecorder::checkDeadbands(*plant(deadbands))) ? "none"
                                                                          : error.toStdString();
    }
    /// What is recorded as "LABEL deadband: TIMEquality …"
    std::string recorded(const char* label)
    {
        const auto reader = recorder::Reader::open(path("record"));
        const Expected<QVector<recorder::Series>> all = (*reader)->series();
        for (const recorder::Series& series : *all) {
            if (series.description.label != QLatin1String(label))
                continue;
            std::string text = series.description.source.toStdString() + " " +
                               QString::number(series.description.deadband).toStdString();
            const Expected<recorder::History> history = (*reader)->changes(series.id, 0, 1000000);
            for (const recorder::Sample& sample : history->samples)
                text += " " + std::to_string(sample.time) + "gsb-"[int(sample.quality)];
            return text;
        }
        return "nothing";
    }

private:
    NoListener m_listener;
};

TEST_F(ValueRecorderTest, NothingIsKnownAtTheBeginAndBehindAPause)
{
    const std::unique_ptr<Plant> tank = plant();
    std::unique_ptr<ValueRecorder> recorder = start(1000);
    ASSERT_TRUE(succeeds(recorder->add(*tank, 1000)));
    recorder->passSecond(2000);
    recorder->passSecond(7000);
    // One millisecond longer than it may take.
    recorder->passSecond(12001);
    recorder->passSecond(13000);
    recorder.reset();
    EXPECT_EQ("tank 0 1000s 7000- 12001s 13000-", recorded("T.set"));
    EXPECT_EQ("tank 0 1000s 7000- 12001s 13000-", recorded("T.text"));
}

TEST_F(ValueRecorderTest, APlcThatWasNotAddedIsNotRecorded)
{
    const std::unique_ptr<Plant> tank = plant();
    std::unique_ptr<ValueRecorder> recorder = start(1000);
    recorder->sampled(*tank, tank->recorded(), 2000);
    recorder.reset();
    EXPECT_EQ("nothing", recorded("T.set"));
}

TEST_F(ValueRecorderTest, OfSeveralDeadbandsTheLastThatFitsCounts)
{
    const std::unique_ptr<Plant> tank =
        plant({{QStringLiteral("T.*"), 0.5}, {QStringLiteral("T.real"), 2}});
    std::unique_ptr<ValueRecorder> recorder = start(1000);
    ASSERT_TRUE(succeeds(recorder->add(*tank, 1000)));
    recorder.reset();
    EXPECT_EQ("tank 0.5 1000s 1000-", recorded("T.set"));
    EXPECT_EQ("tank 2 1000s 1000-", recorded("T.real"));
    EXPECT_EQ("tank 0 1000s 1000-", recorded("T.text")) << "which is no number";
}

TEST_F(ValueRecorderTest, ADeadbandThatFitsNoNumberIsAnError)
{
    EXPECT_EQ("none", deadbandError({{QStringLiteral("T.*"), 1}}));
    EXPECT_EQ("PLC tank: deadband: \"T.text\" is no number",
              deadbandError({{QStringLiteral("T.text"), 1}}));
    EXPECT_EQ("PLC tank: deadband: ", deadbandError({{QStringLiteral("T.x"), 1}}).substr(0, 20));
}

} // namespace
} // namespace test
} // namespace plc::panel
