#include "recorder/recorder_thread.h"

#include <unistd.h>

#include "database/sqlite_database.h"
#include "tests/recorder/recording.h"

namespace plc::recorder {
namespace test {
namespace {

class RecorderThreadTest : public Recording {
protected:
    std::unique_ptr<RecorderThread> start(const QueueLimits& queue = {})
    {
        Expected<std::unique_ptr<RecorderThread>> thread =
            RecorderThread::start(file, Limits(), 0, queue);
        EXPECT_TRUE(succeeds(thread)) << error.toStdString();
        return thread ? std::move(*thread) : nullptr;
    }
    template <typename Condition>
    static bool waitUntil(Condition condition)
    {
        for (int i = 0; i < 2000 && !condition(); ++i)
            ::usleep(10000);
        return condition();
    }
};

TEST_F(RecorderThreadTest, RecordsAllThatItWasGivenBeforeItEnds)
{
    std::unique_ptr<RecorderThread> thread = start();
    const int a = thread->series(ofType("P.a", "INT"));
    for (qint64 time = 1; time <= 2000; ++time)
        thread->append({good(a, time, QByteArray::number(time))}, time);
    thread.reset();
    EXPECT_EQ(2001, history(1, 0, 5000).samples.size()); // and the gap at the end
    EXPECT_EQ(Ending::Ended, runs().last().ending);
    EXPECT_EQ(2000, runs().last().until);
}

TEST_F(RecorderThreadTest, APauseIsAGapAlsoWhereTheDiskIsLate)
{
    std::unique_ptr<RecorderThread> thread = start();
    const int a = thread->series(ofType("P.a", "INT"));
    {
        database::SqliteDatabase other;
        ASSERT_TRUE(other.open(file, false));
        ASSERT_TRUE(other.execute("BEGIN IMMEDIATE"));
        // All this waits in the queue, where times go together.
        thread->append({good(a, 100, "1")}, 100);
        thread->append({}, 1000);
        thread->interrupt();
        thread->append({}, 60000);
        thread->append({good(a, 60500, "2")}, 61000);
        ASSERT_TRUE(other.execute("COMMIT"));
    }
    thread.reset();
    const QVector<Sample> wanted{good(a, 100, "1").sample, gap(1000), good(a, 60000, "1").sample,
                                 good(a, 60500, "2").sample, gap(61000)};
    EXPECT_EQ(wanted, history(1, 1, 100000).samples);
    EXPECT_EQ(Ending::Interrupted, runs().first().ending);
}

TEST_F(RecorderThreadTest, GoesOnInANewFileWhereItsOwnWasRemoved)
{
    std::unique_ptr<RecorderThread> thread = start();
    const int a = thread->series(ofType("P.a", "INT"));
    thread->append({good(a, 100, "1")}, 100);
    ASSERT_TRUE(waitUntil([&] { return thread->status().recorded == 1; }));
    ASSERT_TRUE(QFile::remove(file));
    thread->append({}, 2000);
    ASSERT_TRUE(waitUntil([&] { return thread->status().changedFiles == 1; }));
    EXPECT_EQ("", thread->status().error.toStdString());
    thread->append({good(a, 3000, "2")}, 3000);
    thread.reset();
    const QVector<Sample> wanted{good(a, 2000, "1").sample, good(a, 3000, "2").sample, gap(3000)};
    EXPECT_EQ(wanted, history(1, 0, 5000).samples);
}

TEST_F(RecorderThreadTest, ADiskThatIsTooSlowIsAGapBehindWhichTheLastValuesHold)
{
    QueueLimits limits;
    limits.changes = 10;
    std::unique_ptr<RecorderThread> thread = start(limits);
    const int a = thread->series(ofType("P.a", "INT"));
    const int b = thread->series(ofType("P.b", "INT"));
    thread->append({good(a, 100, "1"), good(b, 100, "2")}, 100);
    ASSERT_TRUE(waitUntil([&] { return thread->status().recorded == 2; }));
    {
        database::SqliteDatabase other;
        ASSERT_TRUE(other.open(file, false));
        ASSERT_TRUE(other.execute("BEGIN IMMEDIATE"));
        for (qint64 time = 200; time < 300; ++time)
            thread->append({good(a, time, QByteArray::number(time))}, time);
        ASSERT_TRUE(waitUntil([&] { return !thread->status().error.isEmpty(); }));
        EXPECT_GT(thread->status().dropped, 70);
        ASSERT_TRUE(other.execute("COMMIT"));
    }
    ASSERT_TRUE(waitUntil([&] { return thread->status().waiting == 0; }));
    thread->append({}, 1000);
    ASSERT_TRUE(waitUntil([&] { return thread->status().recorded > 2; }));
    thread->append({good(a, 1100, "3")}, 1100);
    thread.reset();
    const QVector<Sample> samples = history(1, 150, 5000).samples;
    // What had room in the queue, the gap, what came of the dropped ones, the last change, the end.
    ASSERT_GT(samples.size(), 4);
    const int gaps = int(samples.size()) - 4;
    EXPECT_EQ(gap(samples[gaps - 1].time), samples[gaps]);
    EXPECT_EQ(good(1, 1000, "299").sample, samples[gaps + 1]);
    EXPECT_EQ(good(1, 1100, "3").sample, samples[gaps + 2]);
    // The queue may have had room in between, and then there are several gaps.
    const QVector<Sample> others = history(2, 150, 5000).samples;
    ASSERT_GT(others.size(), 2);
    const int last = int(others.size()) - 2;
    EXPECT_EQ(gap(others[last - 1].time), others[last - 1]);
    EXPECT_EQ(good(2, 1000, "2").sample, others[last]);
}

} // namespace
} // namespace test
} // namespace plc::recorder
