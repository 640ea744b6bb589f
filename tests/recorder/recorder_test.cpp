#include "recorder/recorder.h"

#include <gmock/gmock.h>

#include "recorder/reader.h"
#include "tests/support/file_test.h"

namespace plc::recorder {
namespace test {
namespace {

class RecorderTest : public plc::test::FileTest {
protected:
    std::unique_ptr<Recorder> open(qint64 now, const Limits& limits = {})
    {
        Expected<std::unique_ptr<Recorder>> recorder = Recorder::open(file, limits, now);
        EXPECT_TRUE(succeeds(recorder)) << error.toStdString();
        return recorder ? std::move(*recorder) : nullptr;
    }
    std::unique_ptr<Reader> read()
    {
        Expected<std::unique_ptr<Reader>> reader = Reader::open(file);
        EXPECT_TRUE(succeeds(reader)) << error.toStdString();
        return reader ? std::move(*reader) : nullptr;
    }
    static SeriesDescription integer(const char* label)
    {
        SeriesDescription series;
        series.label = QString::fromUtf8(label);
        series.type = values::findIecType(QStringLiteral("INT"));
        return series;
    }

    const QString file = path("a.sqlite");
};

TEST_F(RecorderTest, WhatWasAppendedIsReadInItsRange)
{
    const std::unique_ptr<Recorder> recorder = open(1000);
    const int level = recorder->series(integer("P.level"));
    ASSERT_TRUE(succeeds(recorder->append({{level, {1100, Quality::Good, "\x01"}}}, 1200)));
    ASSERT_TRUE(succeeds(recorder->append({{level, {1300, Quality::Stale, "\x01"}}}, 1300)));
    const Expected<History> history = read()->changes(level, 0, 5000);
    ASSERT_TRUE(succeeds(history)) << error.toStdString();
    EXPECT_EQ(Quality::Gap, history->before.quality);
    ASSERT_EQ(3, history->samples.size());
    EXPECT_EQ((Sample{1100, Quality::Good, "\x01"}), history->samples[0]);
    EXPECT_EQ((Sample{1300, Quality::Stale, "\x01"}), history->samples[1]);
    EXPECT_EQ((Sample{1300, Quality::Gap, {}}), history->samples[2]);
}

} // namespace
} // namespace test
} // namespace plc::recorder
