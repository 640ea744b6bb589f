#include "recorder/recorder.h"

#include "tests/recorder/recording.h"

namespace plc::recorder {
namespace test {
namespace {

using RecorderTest = Recording;

TEST_F(RecorderTest, WhatWasAppendedIsReadInItsRange)
{
    const std::unique_ptr<Recorder> recorder = open(1000);
    const int level = recorder->series(ofType("P.level", "INT"));
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
