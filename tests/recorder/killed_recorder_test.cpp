// A process that records is killed at any moment: all that it was told to be recorded is there, and
// nothing else.

#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include "tests/recorder/recording.h"
#include "tests/support/random.h"

namespace plc::recorder {
namespace test {
namespace {

class KilledRecorder : public Recording {
protected:
    static QByteArray bytesOf(qint32 number)
    {
        return QByteArray(reinterpret_cast<const char*>(&number), int(sizeof number));
    }

    /// Records numbers one greater each time, 20 of each of 3 series at once, and tells each time
    /// the last that is on the disk.
    [[noreturn]] void record(qint32 number, int told)
    {
        Limits limits;
        limits.unsorted = 4000;
        const auto recorder = Recorder::open(file, limits, 1000 * number);
        if (!recorder)
            ::_exit(1);
        const int series[] = {(*recorder)->series(ofType("P.a", "DINT")),
                              (*recorder)->series(ofType("P.b", "DINT")),
                              (*recorder)->series(ofType("P.c", "DINT"))};
        for (;;) {
            QVector<Change> changes;
            for (int i = 0; i < 20; ++i, ++number) {
                for (int one : series)
                    changes.append(good(one, 1000 * qint64(number), bytesOf(number)));
            }
            const qint32 last = number - 1;
            if (!(*recorder)->append(changes, 1000 * qint64(last)) ||
                ::write(told, &last, sizeof last) != sizeof last)
                ::_exit(1);
        }
    }
    /// Lets a process record from `number` on for a while. Returns the last number that it told.
    qint32 recordAndKill(qint32 number, int milliseconds)
    {
        int ends[2];
        EXPECT_EQ(0, ::pipe(ends));
        const pid_t child = ::fork();
        if (child == 0)
            record(number, ends[1]);
        ::close(ends[1]);
        qint32 told = number - 1;
        // The time counts from the first success: to begin takes as long as the disk is slow.
        const bool hasBegun = ::read(ends[0], &told, sizeof told) == sizeof told;
        EXPECT_TRUE(hasBegun);
        ::usleep(useconds_t(milliseconds) * 1000);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(ends[0], &told, sizeof told) == sizeof told) {
        }
        ::close(ends[0]);
        return told;
    }
};

TEST_F(KilledRecorder, LeavesAllThatItToldAndAGap)
{
    plc::test::Random random(1);
    qint32 first = 1;
    for (int round = 0; round < 6; ++round) {
        const qint32 told = recordAndKill(first, random.below(60));
        const std::unique_ptr<Reader> reader = read();
        ASSERT_TRUE(reader);
        qint32 last = 0;
        for (int series = 1; series <= 3; ++series) {
            const Expected<History> history =
                reader->changes(series, 1000 * qint64(first), 1000 * qint64(told + 1000));
            ASSERT_TRUE(succeeds(history)) << error.toStdString();
            const QVector<Sample>& samples = history->samples;
            ASSERT_FALSE(samples.isEmpty());
            EXPECT_EQ(Quality::Gap, history->before.quality);
            last = first + qint32(samples.size()) - 2;
            // One more transaction may be on the disk than was told.
            EXPECT_GE(last, told);
            EXPECT_LE(last, told + 20);
            for (qint32 i = 0; i + 1 < samples.size(); ++i)
                ASSERT_EQ(good(series, 1000 * qint64(first + i), bytesOf(first + i)).sample,
                          samples[i]);
            EXPECT_EQ(gap(1000 * qint64(last)), samples.last());
        }
        first = last + 100;
    }
    open(1000 * qint64(first));
    const QVector<recorder::Run> all = runs();
    ASSERT_EQ(7, all.size());
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(Ending::Interrupted, all[i].ending);
}

} // namespace
} // namespace test
} // namespace plc::recorder
