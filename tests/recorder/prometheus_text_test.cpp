#include "recorder/handover.h"
#include "tests/recorder/recording.h"

namespace plc::recorder {
namespace test {
namespace {

/// One label whose deadband was 0, then 2, then 0 again, each in a run of its own.
class PrometheusText : public Recording {
protected:
    static SeriesDescription level(double deadband)
    {
        SeriesDescription series = ofType("P.level", "SINT");
        series.deadband = deadband;
        return series;
    }
    void record(double deadband, qint64 time, char value)
    {
        const std::unique_ptr<Recorder> recorder = open(time);
        const int series = recorder->series(level(deadband));
        append(*recorder, {good(series, time, QByteArray(1, value))}, time + 1000);
    }
    static std::string rows(const QByteArray& text, const char* metric)
    {
        std::string rows;
        for (const QByteArray& line : text.split('\n')) {
            if (line.startsWith(QByteArray(metric) + '{'))
                rows += line.mid(line.indexOf("} ") + 2).toStdString() + "; ";
        }
        return rows;
    }
};

TEST_F(PrometheusText, SeriesOfOneLabelAreOneInTheOrderOfTime)
{
    record(0, 1000, 1);
    record(2, 10000, 2);
    record(0, 20000, 3);
    QByteArray text;
    const TakeText take = [&](const QByteArray& part) {
        text += part;
        return true;
    };
    const Expected<Handover> done = writeOpenMetrics(read().get(), {}, take);
    ASSERT_TRUE(succeeds(done)) << error.toStdString();
    EXPECT_EQ("1 1.000; 2 10.000; 3 20.000; ", rows(text, "plc_value"));
    EXPECT_EQ("1 1.000; 0 2.000; 1 10.000; 0 11.000; 1 20.000; 0 21.000; ", rows(text, "plc_good"));
    EXPECT_EQ(9, done->rows);
}

TEST_F(PrometheusText, OfSeriesOfOneLabelTheOneThatGoesOnIsExposed)
{
    const Sample known{5, Quality::Good, QByteArray(1, 7)};
    const LastValue old{level(0), gap(3)};
    const LastValue present{level(2), known};
    for (const QVector<LastValue>& values : {QVector<LastValue>{old, present}, {present, old}}) {
        const QByteArray text = expositionText(values, nullptr);
        EXPECT_EQ("7; ", rows(text, "plc_value"));
        EXPECT_EQ("1; ", rows(text, "plc_good"));
    }
}

} // namespace
} // namespace test
} // namespace plc::recorder
