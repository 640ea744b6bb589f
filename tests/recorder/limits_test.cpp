#include <sys/resource.h>
#include <csignal>

#include <QtCore/QFileInfo>

#include "tests/recorder/recording.h"
#include "tests/support/random.h"

namespace plc::recorder {
namespace test {
namespace {

class LimitsTest : public Recording {
protected:
    QByteArray rubbish(int size)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes.append(char(m_random.below(256)));
        return bytes;
    }
    SeriesDescription text(const char* label)
    {
        SeriesDescription series = ofType(label, "STRING");
        series.stringLength = 1000;
        return series;
    }

    plc::test::Random m_random{7};
};

TEST_F(LimitsTest, TheOldestGoesWhenTheFileWouldBeTooLarge)
{
    Limits limits;
    limits.size = Limits::kSmallest;
    const std::unique_ptr<Recorder> recorder = open(0, limits);
    const int constant = recorder->series(ofType("P.constant", "INT"));
    const int often = recorder->series(text("P.often"));
    append(*recorder, {good(constant, 0, QByteArray("\1\0", 2))}, 0);
    QVector<Sample> given;
    for (qint64 time = 1; time <= 6000; ++time) {
        given.append(good(often, 1000 * time, rubbish(1000)).sample);
        append(*recorder, {{often, given.last()}}, 1000 * time);
        ASSERT_EQ("", recorder->maintenanceError().toStdString());
        ASSERT_LE(QFileInfo(file).size(), Limits::kSmallest) << time;
    }
    // 6 MB were given. What stays are the last, whole, and the value that never changed.
    const History kept = history(often, 0, 7000000);
    const int count = int(kept.samples.size()) - 1; // and the gap at the end of what is recorded
    ASSERT_GT(count, 500);
    ASSERT_LT(count, 1000);
    EXPECT_EQ(given.mid(int(given.size()) - count), kept.samples.mid(0, count));
    const Expected<Sample> held = read()->valueAt(constant, 5999000);
    ASSERT_TRUE(succeeds(held));
    EXPECT_EQ(good(constant, 0, QByteArray("\1\0", 2)).sample, *held);
}

TEST_F(LimitsTest, WhatIsTooOldGoesAndWhatItHeldStays)
{
    Limits limits;
    limits.age = 100000;
    const std::unique_ptr<Recorder> recorder = open(1000000, limits);
    const int level = recorder->series(ofType("P.level", "INT"));
    for (qint64 time = 1000000; time <= 2000000; time += 1000)
        append(*recorder, {good(level, time, QByteArray::number(time))}, time);
    const History kept = history(level, 0, 3000000);
    // The horizon lies 100 s back, at most a 32nd of them more, and before it the value held there.
    EXPECT_LE(1895000, kept.samples.first().time);
    EXPECT_GE(1900000, kept.samples.first().time);
    EXPECT_EQ(2000000, kept.samples.last().time);
}

TEST_F(LimitsTest, RunsThatAreTooOldGoAltogether)
{
    Limits limits;
    limits.age = 100000;
    for (const qint64 time : {0, 50000, 500000}) {
        const std::unique_ptr<Recorder> recorder = open(time, limits);
        append(*recorder, {good(recorder->series(ofType("P.a", "INT")), time, "1")}, time);
    }
    EXPECT_EQ(1, runs().size());
    EXPECT_EQ(500000, history(1, 0, 1000000).samples.first().time);
}

/// Five days of a value that changes each hour, of which ten days are kept. The clock is right.
class AgeTest : public LimitsTest {
protected:
    static constexpr qint64 kHour = 3600000;
    static constexpr qint64 kDay = 24 * kHour;
    static constexpr qint64 kBegin = 1800000000000;

    AgeTest()
    {
        limits.age = 10 * kDay;
        start(kBegin);
        for (int hour = 0; hour <= 120; ++hour)
            pass(kBegin + hour * kHour, hour * kHour);
    }
    void start(qint64 now)
    {
        recorder.reset();
        recorder = open(now, limits);
        level = recorder->series(ofType("P.level", "INT"));
    }
    void pass(qint64 now, qint64 steady)
    {
        const Change change = good(level, now, QByteArray::number(now));
        EXPECT_TRUE(succeeds(recorder->append({change}, now, steady))) << error.toStdString();
    }
    /// Changes that were recorded in the five days.
    int kept()
    {
        int count = 0;
        for (const Sample& sample : history(level, kBegin, kBegin + 5 * kDay + 1).samples)
            count += sample.quality == Quality::Good;
        return count;
    }

    Limits limits;
    std::unique_ptr<Recorder> recorder;
    int level = 0;
};

TEST_F(AgeTest, AClockThatIsWrongForASecondRemovesNothing)
{
    EXPECT_EQ(121, kept());
    const qint64 now = kBegin + 5 * kDay;
    pass(now + 400 * kDay, 5 * kDay);
    pass(now + 400 * kDay + 1000, 5 * kDay + 1000);
    pass(now + 2000, 5 * kDay + 2000);
    EXPECT_EQ(121, kept());
}

TEST_F(AgeTest, RemovalGoesOnAsTimePassesBehindAClockThatWasWrong)
{
    const qint64 now = kBegin + 5 * kDay;
    pass(now + 400 * kDay, 5 * kDay);
    for (int hour = 1; hour <= 9 * 24; ++hour)
        pass(now + hour * kHour, 5 * kDay + hour * kHour);
    // Of 14 days the last ten are kept, at most a 32nd of them more.
    const History all = history(level, kBegin, kBegin + 20 * kDay);
    EXPECT_GE(kBegin + 4 * kDay, all.samples.first().time);
    EXPECT_LE(kBegin + 4 * kDay - 10 * kDay / 32 - kHour, all.samples.first().time);
}

TEST_F(AgeTest, AClockThatStaysWhereItWasSetCountsAfterAnHour)
{
    const qint64 now = kBegin + 405 * kDay;
    pass(now, 5 * kDay);
    pass(now + kHour - 1000, 5 * kDay + kHour - 1000);
    EXPECT_EQ(121, kept());
    pass(now + kHour, 5 * kDay + kHour);
    EXPECT_EQ(1, kept()); // what it held there
}

TEST_F(AgeTest, AStartFarAheadRemovesNothingBeforeTheClockWasRightForAnHour)
{
    const qint64 now = kBegin + 405 * kDay;
    start(now);
    pass(now, 7);
    pass(now + kHour - 1000, kHour - 1000 + 7);
    EXPECT_EQ(121, kept());
    pass(now + kHour, kHour + 7);
    EXPECT_EQ(0, kept());
}

TEST_F(LimitsTest, TooSmallASizeIsAnError)
{
    Limits limits;
    limits.size = 1000;
    EXPECT_FALSE(succeeds(Recorder::open(file, limits, 0)));
    EXPECT_EQ("a recording may be limited to 1048576 bytes and more, not to 1000", error);
}

TEST_F(LimitsTest, OnAFullDiskWhatWasRecordedIsReadAndTheRestIsAGap)
{
    std::unique_ptr<Recorder> recorder = open(0);
    const int series = recorder->series(text("P.text"));
    append(*recorder, {good(series, 1000, "kept")}, 1000);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlim_t unlimited = RLIM_INFINITY;
    const rlimit limit = {150000, unlimited};
    const rlimit none = {unlimited, unlimited};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    const QVector<Change> lost{good(series, 2000, rubbish(200000))};
    EXPECT_FALSE(succeeds(recorder->append(lost, 2000)));
    EXPECT_TRUE(error.startsWith(file)) << error.toStdString();
    EXPECT_EQ("kept", history(series, 0, 5000).samples.first().bytes.toStdString());
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &none));
    recorder->giveUp({good(series, 2000, "lost")});
    append(*recorder, {}, 3000);
    recorder.reset();
    const QVector<Sample> wanted{good(series, 1000, "kept").sample, gap(1000),
                                 good(series, 3000, "lost").sample, gap(3000)};
    EXPECT_EQ(wanted, history(series, 0, 5000).samples);
    EXPECT_EQ(Ending::ChangesLost, runs().first().ending);
}

TEST_F(LimitsTest, ValuesKeepTheirSeriesWhenTheDiskWasFullAsTheyWerePutTogether)
{
    Limits limits;
    limits.unsorted = 60000; // 20 values of 3,000 bytes
    std::unique_ptr<Recorder> recorder = open(0, limits);
    const int rare = recorder->series(text("P.rare"));
    QVector<Change> given;
    for (int i = 1; i <= 20; ++i) {
        const int series = recorder->series(text(QByteArray("P.v").append(char('0' + i))));
        given.append(good(series, 1000 * i, rubbish(3000)));
    }
    for (const Change& change : given.mid(0, 19))
        append(*recorder, {change}, change.sample.time);
    // Of the journal there is room for the last value, and not for the blocks of all of them.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlim_t unlimited = RLIM_INFINITY;
    const rlim_t size = rlim_t(QFileInfo(file + QStringLiteral("-wal")).size());
    const rlimit limit = {size + 40000, unlimited};
    const rlimit none = {unlimited, unlimited};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    append(*recorder, {given.last()}, 20000);
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &none));
    EXPECT_NE("", recorder->maintenanceError());
    append(*recorder, {good(rare, 81000, "seldom")}, 81000);
    EXPECT_EQ("", recorder->maintenanceError());
    recorder.reset();
    EXPECT_EQ((QVector<Sample>{good(rare, 81000, "seldom").sample, gap(81000)}),
              history(rare, 0, 100000).samples);
    for (const Change& change : given) {
        EXPECT_EQ((QVector<Sample>{change.sample, gap(81000)}),
                  history(change.series, 0, 100000).samples);
    }
}

TEST_F(LimitsTest, ChangesNeedLessThan35BytesOnTheDisk)
{
    std::unique_ptr<Recorder> recorder = open(0);
    QVector<int> series;
    for (int i = 0; i < 100; ++i)
        series.append(recorder->series(ofType(QByteArray("P.v").append(char('0' + i)), "REAL")));
    for (qint64 second = 1; second <= 300; ++second) {
        QVector<Change> changes;
        for (int one : series)
            changes.append(good(one, 1000 * second - m_random.below(20), rubbish(4)));
        append(*recorder, changes, 1000 * second);
    }
    recorder.reset();
    EXPECT_LT(double(QFileInfo(file).size()) / 30000, 12);
}

TEST_F(LimitsTest, SingleChangesNeedLessThan35BytesToo)
{
    std::unique_ptr<Recorder> recorder = open(0);
    const int series = recorder->series(ofType("P.v", "REAL"));
    for (qint64 i = 1; i <= 3000; ++i)
        append(*recorder, {good(series, 61003 * i, rubbish(4))}, 61003 * i);
    recorder.reset();
    // The tables of an empty recording have 44 KiB.
    EXPECT_LT(double(QFileInfo(file).size() - 45056) / 3000, 35);
}

} // namespace
} // namespace test
} // namespace plc::recorder
