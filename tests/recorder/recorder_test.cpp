#include "recorder/recorder.h"

#include "recorder/attention.h"
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

TEST_F(RecorderTest, AfterTheClockWasSetBackTheLaterRecordHoldsAndNothingIsLost)
{
    std::unique_ptr<Recorder> recorder = open(1000);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 1000, "1"), good(b, 1000, "2")}, 1000);
    append(*recorder, {good(a, 5000, "3")}, 5000);
    append(*recorder, {good(a, 4000, "4")}, 4000);
    append(*recorder, {}, 6000);
    recorder.reset();
    // Where the later record begins there is a gap of no time.
    const QVector<Sample> wanted{good(a, 1000, "1").sample, gap(4000), good(a, 4000, "4").sample,
                                 gap(6000)};
    EXPECT_EQ(wanted, history(a, 0, 10000).samples);
    const QVector<Sample> held{good(b, 1000, "2").sample, gap(4000), good(b, 4000, "2").sample,
                               gap(6000)};
    EXPECT_EQ(held, history(b, 0, 10000).samples);
    EXPECT_EQ(Ending::ClockSetBack, runs().first().ending);
    QVector<Sample> all;
    const Expected<void> visited = read()->forEachChange(TimeRange(), [&](const Change& change) {
        if (change.series == a)
            all.append(change.sample);
        return true;
    });
    ASSERT_TRUE(succeeds(visited));
    const QVector<Sample> recorded{good(a, 1000, "1").sample, good(a, 5000, "3").sample, gap(5000),
                                   good(a, 4000, "4").sample, gap(6000)};
    EXPECT_EQ(recorded, all);
}

TEST_F(RecorderTest, APauseIsAGapBehindWhichTheSeriesHoldWhatIsGiven)
{
    std::unique_ptr<Recorder> recorder = open(1000);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 1000, "1"), good(b, 1000, "2")}, 1000);
    append(*recorder, {}, 2000);
    recorder->interrupt();
    append(*recorder, {{a, {60000, Quality::Stale, {}}}}, 60000);
    append(*recorder, {}, 61000);
    recorder.reset();
    const QVector<Sample> wanted{good(a, 1000, "1").sample, gap(2000),
                                 Sample{60000, Quality::Stale, {}}, gap(61000)};
    EXPECT_EQ(wanted, history(a, 0, 100000).samples);
    const QVector<Sample> held{good(b, 1000, "2").sample, gap(2000), good(b, 60000, "2").sample,
                               gap(61000)};
    EXPECT_EQ(held, history(b, 0, 100000).samples);
    EXPECT_EQ(Ending::Interrupted, runs().first().ending);
}

TEST(RecorderAttention, IsLostWhereSecondsAreLeftOut)
{
    Attention attention;
    EXPECT_FALSE(attention.wasLost(100000));
    EXPECT_FALSE(attention.wasLost(101000));
    EXPECT_FALSE(attention.wasLost(106000));
    EXPECT_TRUE(attention.wasLost(111001));
    EXPECT_FALSE(attention.wasLost(111002));
    EXPECT_FALSE(attention.wasLost(50000)) << "a clock that is set back has a run of its own";
}

TEST_F(RecorderTest, TheEndOfARunIsAGapAlsoOfSeriesWithoutAChangeInTheRange)
{
    for (const qint64 unsorted : {1000000, 1}) { // in batches, and in blocks
        file = path("unsorted%1.sqlite").arg(unsorted);
        Limits limits;
        limits.unsorted = unsorted;
        std::unique_ptr<Recorder> recorder = open(0, limits);
        const int held = recorder->series(ofType("P.held", "INT"));
        const int often = recorder->series(ofType("P.often", "INT"));
        const int left = recorder->series(ofType("P.left", "INT"));
        append(*recorder, {good(held, 1000, "1"), good(often, 1000, "2"), good(left, 1000, "3")},
               1000);
        append(*recorder, {{left, gap(1200)}, good(often, 2000, "4")}, 2000);
        append(*recorder, {}, 3000);
        recorder.reset();
        QVector<int> series;
        QVector<Sample> samples;
        const Expected<void> visited =
            read()->forEachChange({1500, 3001}, [&](const Change& change) {
                series.append(change.series);
                samples.append(change.sample);
                return true;
            });
        ASSERT_TRUE(succeeds(visited));
        EXPECT_EQ((QVector<int>{often, held, often}), series) << unsorted;
        EXPECT_EQ((QVector<Sample>{good(often, 2000, "4").sample, gap(3000), gap(3000)}), samples);
    }
}

TEST_F(RecorderTest, OnlyADeadbandLeavesChangesOut)
{
    std::unique_ptr<Recorder> recorder = open(0);
    SeriesDescription rough = ofType("P.rough", "SINT");
    rough.deadband = 3;
    const int exact = recorder->series(ofType("P.exact", "SINT"));
    const int few = recorder->series(rough);
    // 10, 12, 13, 11, 10: at least 3 away from the one recorded before are 13 and the last.
    qint64 now = 0;
    for (const char value : QByteArray("\x0a\x0c\x0d\x0b\x0a")) {
        const QByteArray bytes(1, value);
        append(*recorder, {good(exact, now, bytes), good(few, now, bytes)}, now);
        ++now;
    }
    append(*recorder, {{few, {100, Quality::Stale, QByteArray(1, 10)}}}, 100);
    recorder.reset();
    EXPECT_EQ(6, history(exact, 0, 1000).samples.size());
    QByteArray values;
    for (const Sample& sample : history(few, 0, 1000).samples)
        values += sample.bytes;
    EXPECT_EQ(QByteArray("\x0a\x0d\x0a\x0a"), values);
}

TEST_F(RecorderTest, ADeadbandComparesWithWhatTheSameCallRecordedBefore)
{
    std::unique_ptr<Recorder> recorder = open(0);
    SeriesDescription rough = ofType("P.rough", "SINT");
    rough.deadband = 3;
    const int level = recorder->series(rough);
    const QByteArray zero(1, 0);
    const QByteArray two(1, 2);
    const QByteArray five(1, 5);
    append(*recorder, {good(level, 1, zero)}, 1);
    // 2 is less than 3 away from 5 as well as from 0; the last of a call is 0 again.
    append(*recorder, {good(level, 2, five), good(level, 3, zero), good(level, 4, two)}, 4);
    // Back from bad, though the value is the one from before.
    append(*recorder, {{level, {5, Quality::Bad, {}}}, good(level, 6, zero)}, 6);
    recorder.reset();
    const QVector<Sample> wanted{good(level, 1, zero).sample, good(level, 2, five).sample,
                                 good(level, 3, zero).sample, Sample{5, Quality::Bad, {}},
                                 good(level, 6, zero).sample, gap(6)};
    EXPECT_EQ(wanted, history(level, 0, 1000).samples);
}

TEST_F(RecorderTest, ADeadbandLeavesNothingOutThatANewRunBeginsWith)
{
    std::unique_ptr<Recorder> recorder = open(0);
    SeriesDescription rough = ofType("P.rough", "SINT");
    rough.deadband = 3;
    const int level = recorder->series(rough);
    const QByteArray ten(1, 10);
    const QByteArray eleven(1, 11);
    append(*recorder, {good(level, 5000, ten)}, 5000);
    // The clock is set back, and the second change is too near to the first one of the new run.
    append(*recorder, {good(level, 4000, eleven), good(level, 4100, ten)}, 4100);
    recorder->giveUp({});
    append(*recorder, {good(level, 6000, ten)}, 6000);
    recorder.reset();
    const QVector<Sample> wanted{good(level, 4000, eleven).sample, gap(4100),
                                 good(level, 6000, ten).sample, gap(6000)};
    EXPECT_EQ(wanted, history(level, 0, 10000).samples);
}

TEST_F(RecorderTest, AnotherDescriptionIsAnotherSeriesAndTheSameOneStays)
{
    SeriesDescription series = ofType("P.a", "INT");
    series.source = QStringLiteral("Line 1");
    series.unit = QStringLiteral("bar");
    int id = 0;
    {
        const std::unique_ptr<Recorder> recorder = open(0);
        id = recorder->series(series);
        append(*recorder, {good(id, 0, "1")}, 0);
    }
    const std::unique_ptr<Recorder> recorder = open(1000);
    EXPECT_EQ(id, recorder->series(series));
    SeriesDescription other = series;
    other.unit = QStringLiteral("mbar");
    EXPECT_NE(id, recorder->series(other));
    append(*recorder, {good(recorder->series(other), 1000, "2")}, 1000);
    const Expected<QVector<Series>> all = read()->series();
    ASSERT_TRUE(succeeds(all));
    ASSERT_EQ(2, all->size());
    EXPECT_TRUE(all->first().description == series);
    EXPECT_TRUE(all->last().description == other);
}

TEST_F(RecorderTest, TwoCannotRecordIntoOneFile)
{
    std::unique_ptr<Recorder> first = open(0);
    EXPECT_FALSE(succeeds(Recorder::open(file, Limits(), 0)));
    EXPECT_TRUE(error.endsWith(
        QStringLiteral("a.sqlite: another program is recording into it; name another file")))
        << error.toStdString();
    first.reset();
    EXPECT_TRUE(succeeds(Recorder::open(file, Limits(), 1000)));
    EXPECT_EQ("a.sqlite", names());
}

TEST_F(RecorderTest, LastValuesAreThoseOfTheRunThatGoesOn)
{
    {
        const std::unique_ptr<Recorder> recorder = open(0);
        append(*recorder, {good(recorder->series(ofType("P.old", "INT")), 0, "1")}, 0);
    }
    const std::unique_ptr<Recorder> recorder = open(1000);
    append(*recorder, {good(recorder->series(ofType("P.new", "INT")), 1000, "2")}, 1000);
    const Expected<QVector<Change>> last = read()->lastValues();
    ASSERT_TRUE(succeeds(last));
    ASSERT_EQ(2, last->size());
    EXPECT_EQ(Quality::Gap, last->first().sample.quality);
    EXPECT_EQ(good(2, 1000, "2").sample, last->last().sample);
}

TEST_F(RecorderTest, MoreChangesThanAskedForAreToldAndNotGiven)
{
    const std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    append(*recorder, {good(a, 1, "1"), good(a, 2, "2"), good(a, 3, "3")}, 3);
    EXPECT_TRUE(read()->changes(a, 0, 3, 1)->isCut);
    EXPECT_FALSE(read()->changes(a, 0, 3, 2)->isCut);
}

TEST_F(RecorderTest, MoreBytesThanAskedForAreToldAndNotGiven)
{
    const std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "STRING"));
    append(*recorder, {good(a, 1, "123"), good(a, 2, "45"), good(a, 3, "678")}, 3);
    EXPECT_TRUE(read()->changes(a, 2, 4, 100, 4)->isCut);
    EXPECT_FALSE(read()->changes(a, 2, 4, 100, 5)->isCut);
}

TEST_F(RecorderTest, AggregatesNeedFewChangesInMemory)
{
    const std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "SINT"));
    QVector<Change> changes;
    for (char i = 0; i < 8; ++i)
        changes.append(good(a, i * 10, QByteArray(1, i)));
    append(*recorder, changes, 80);
    const Expected<QVector<Aggregate>> steps = read()->aggregates(a, 0, 80, 20, 2);
    ASSERT_TRUE(succeeds(steps)) << error.toStdString();
    ASSERT_EQ(4, steps->size());
    for (int i = 0; i < 4; ++i) {
        EXPECT_DOUBLE_EQ(2 * i + 0.5, (*steps)[i].mean);
        EXPECT_DOUBLE_EQ(1, (*steps)[i].coverage);
    }
    const Expected<QVector<Aggregate>> all = read()->aggregates(a, 0, 80, 80, 2);
    ASSERT_TRUE(succeeds(all)) << error.toStdString();
    ASSERT_EQ(1, all->size());
    EXPECT_DOUBLE_EQ(3.5, all->first().mean);
    EXPECT_EQ(7, all->first().maximum.nearest);
}

TEST_F(RecorderTest, AggregatesLeaveOutWhatWasRecordedAgainBehindManyChanges)
{
    const std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "SINT"));
    QVector<Change> changes;
    for (char i = 0; i < 8; ++i)
        changes.append(good(a, i * 10, QByteArray(1, i)));
    append(*recorder, changes, 80);
    // From 15 ms on it was 100, as is told late, and from 5 ms on it was 50, as is told later.
    append(*recorder, {good(a, 15, QByteArray(1, 100)), good(a, 5, QByteArray(1, 50))}, 80);
    const Expected<QVector<Aggregate>> steps = read()->aggregates(a, 0, 80, 10, 1);
    ASSERT_TRUE(succeeds(steps)) << error.toStdString();
    ASSERT_EQ(8, steps->size());
    EXPECT_DOUBLE_EQ(25, steps->first().mean);
    for (int i = 1; i < 8; ++i) {
        EXPECT_EQ(50, (*steps)[i].minimum.nearest) << i;
        EXPECT_EQ(50, (*steps)[i].maximum.nearest) << i;
    }
}

TEST_F(RecorderTest, CallsThatBelongTogetherSeeOneState)
{
    const std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 1, "1"), good(b, 1, "1")}, 1);
    const std::unique_ptr<Reader> reader = read();
    const auto count = [&](int series) { return reader->changes(series, 0, 100)->samples.size(); };
    ASSERT_TRUE(succeeds(reader->inOneState({a, b}, [&] {
        EXPECT_EQ(2, count(a));
        append(*recorder, {good(b, 2, "2")}, 2);
        EXPECT_EQ(2, count(b));
    })));
    EXPECT_EQ(3, count(b));
}

QVector<Aggregate> aggregatesOf(const NumberSample& before, const QVector<NumberSample>& samples,
                                qint64 from, qint64 to, qint64 step)
{
    AggregateSum sum(from, to, step);
    sum.add({from - 1, before.nearest, before.rest, before.knowledge});
    for (const NumberSample& sample : samples)
        sum.add(sample);
    return sum.finish();
}

TEST(Aggregates, HaveLeastAndGreatestOf64BitsWithAllTheirDigits)
{
    const auto extremes = [](const char* type, const QVector<values::Value>& held) {
        QVector<NumberSample> samples;
        for (const values::Value& value : held) {
            const ExactNumber number = *exactNumber(value);
            samples.append({samples.size(), number.nearest, number.rest, Knowledge::Number});
        }
        const QVector<Aggregate> all = aggregatesOf(NumberSample(), samples, 0, 10, 10);
        const values::IecType& iecType = *values::findIecType(std::string_view(type));
        return std::pair(valueOf(iecType, all[0].minimum), valueOf(iecType, all[0].maximum));
    };
    using Extremes = std::pair<values::Value, values::Value>;
    constexpr qint64 kLeast = std::numeric_limits<qint64>::min();
    constexpr qint64 kMost = std::numeric_limits<qint64>::max();
    // All three of a kind have the same nearest double.
    EXPECT_EQ(extremes("LINT", {kMost - 1, kMost, kMost - 2}), Extremes(kMost - 2, kMost));
    EXPECT_EQ(extremes("LINT", {kLeast + 1, kLeast, kLeast + 2}), Extremes(kLeast, kLeast + 2));
    EXPECT_EQ(extremes("LINT", {qint64(9007199254740993), qint64(9007199254740992)}),
              Extremes(qint64(9007199254740992), qint64(9007199254740993)));
    EXPECT_EQ(extremes("LINT", {kMost, kLeast, qint64(0)}), Extremes(kLeast, kMost));
    constexpr quint64 kAll = std::numeric_limits<quint64>::max();
    EXPECT_EQ(extremes("ULINT", {kAll - 1, kAll, kAll - 2}), Extremes(kAll - 2, kAll));
    EXPECT_EQ(extremes("LWORD", {quint64(0), kAll}), Extremes(quint64(0), kAll));
    EXPECT_EQ(extremes("REAL", {0.1F, -0.5F}), Extremes(-0.5F, 0.1F));
    EXPECT_EQ(extremes("LREAL", {0.1, -1e300}), Extremes(-1e300, 0.1));
    EXPECT_EQ(extremes("BOOL", {true, false}), Extremes(false, true));
    EXPECT_EQ(extremes("TIME", {quint64(90000)}), Extremes(quint64(90000), quint64(90000)));
}

TEST(Aggregates, AreWeightedByTime)
{
    // 1 for 2 s, 4 for 3 s, then nothing.
    const QVector<NumberSample> samples{{0, 1, 0, Knowledge::Number},
                                        {2000, 4, 0, Knowledge::Number},
                                        {5000, 0, 0, Knowledge::Gap}};
    const QVector<Aggregate> one = aggregatesOf(NumberSample(), samples, 0, 10000, 10000);
    ASSERT_EQ(1, one.size());
    EXPECT_DOUBLE_EQ(2.8, one[0].mean);
    EXPECT_DOUBLE_EQ(1, one[0].minimum.nearest);
    EXPECT_DOUBLE_EQ(4, one[0].maximum.nearest);
    EXPECT_DOUBLE_EQ(0.5, one[0].coverage);
    // The last step is shorter, and what the step before held at its end is no value of the next.
    const QVector<Aggregate> steps =
        aggregatesOf({-1, 9, 0, Knowledge::Number}, samples, 0, 7000, 2000);
    ASSERT_EQ(4, steps.size());
    EXPECT_DOUBLE_EQ(1, steps[0].maximum.nearest);
    EXPECT_DOUBLE_EQ(4, steps[1].minimum.nearest);
    EXPECT_DOUBLE_EQ(0.5, steps[2].coverage);
    EXPECT_DOUBLE_EQ(0, steps[3].coverage);
    EXPECT_EQ(6000, steps[3].begin);
}

TEST(Aggregates, TellWhatHeldInTheRestOfTheTime)
{
    const QVector<NumberSample> samples{
        {100, 1, 0, Knowledge::Number},   {103, 0, 0, Knowledge::Bad},
        {107, 0, 0, Knowledge::Stale},    {110, 0, 0, Knowledge::Stale},
        {115, 0, 0, Knowledge::NoNumber}, {121, 0, 0, Knowledge::Gap},
        {130, 2, 0, Knowledge::Number},   {140, 3, 0, Knowledge::Number}};
    const QVector<Aggregate> steps = aggregatesOf(NumberSample(), samples, 90, 150, 10);
    ASSERT_EQ(6, steps.size());
    EXPECT_EQ(Knowledge::Gap, steps[0].rest) << "nothing was recorded yet";
    EXPECT_EQ(Knowledge::Bad, steps[1].rest) << "4 ms; it was stale for 3";
    EXPECT_DOUBLE_EQ(0.3, steps[1].coverage);
    EXPECT_EQ(Knowledge::Stale, steps[2].rest);
    EXPECT_EQ(Knowledge::Gap, steps[3].rest) << "9 ms; it was no number for 1";
    EXPECT_EQ(Knowledge::Number, steps[4].rest);
    EXPECT_DOUBLE_EQ(1, steps[5].coverage);
    EXPECT_EQ(Knowledge::NoNumber, aggregatesOf(NumberSample(), samples, 114, 121, 7)[0].rest);
}

} // namespace
} // namespace test
} // namespace plc::recorder
