// Bytes a change on the disk, and how long a day takes to open, of a recording and of a log of
// version 1.0 with the same values:
//
//     bench_recorder FOLDER [VALUES [SECONDS [READERS]]]
//
// VALUES (1,000) REAL values change each second, for SECONDS (86,400) in the recording and for a
// hundredth of them in the log, which is written one change a row. READERS (4) read at
// once, as in the panel. Needs some 2 GB in FOLDER.

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "log/sqlite_log.h"
#include "recorder/reader.h"
#include "recorder/recorder.h"

namespace plc {
namespace {

constexpr qint64 kStart = 1795240800000; // ms
constexpr int kShown = 8;                // values of a plot
constexpr int kPoints = 1000;            // of each of them

int fail(const QString& text)
{
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    return 1;
}

/// Values that wander, as measured ones do.
class Plant {
public:
    explicit Plant(int count) : m_values(count, 50.0F) {}

    float next(int value)
    {
        m_values[value] += std::normal_distribution<float>(0, 0.1F)(m_engine);
        return m_values[value];
    }
    /// Times of the values of one reply differ by little.
    qint64 time(qint64 second) { return kStart + second * 1000 + qint64(m_engine() % 20); }

private:
    std::mt19937 m_engine{1};
    QVector<float> m_values;
};

qint64 sizeOf(const QString& file)
{
    return QFileInfo(file).size() + QFileInfo(file + QStringLiteral("-wal")).size();
}

int record(const QString& file, int values, qint64 seconds)
{
    Plant plant(values);
    auto recorder = recorder::Recorder::open(file, recorder::Limits(), kStart);
    if (!recorder)
        return fail(recorder.error().text);
    QVector<int> series;
    for (int i = 0; i < values; ++i) {
        recorder::SeriesDescription description;
        description.label = QStringLiteral("Plant.value[%1]").arg(i);
        description.type = values::findIecType(QStringLiteral("REAL"));
        series.append((*recorder)->series(description));
    }
    QElapsedTimer clock;
    clock.start();
    qint64 longest = 0;
    for (qint64 second = 0; second < seconds; ++second) {
        QVector<recorder::Change> changes;
        const qint64 time = plant.time(second);
        for (int i = 0; i < values; ++i) {
            const float value = plant.next(i);
            QByteArray bytes(4, '\0');
            std::memcpy(bytes.data(), &value, sizeof value);
            changes.append({series[i], {time, recorder::Quality::Good, bytes}});
        }
        QElapsedTimer one;
        one.start();
        if (const Expected<void> done = (*recorder)->append(changes, time); !done)
            return fail(done.error().text);
        longest = qMax(longest, one.elapsed());
    }
    const double total = double(seconds) * values;
    std::printf("recorded: %.0f changes in %.1f s, the longest write %lld ms\n", total,
                double(clock.elapsed()) / 1000, longest);
    std::printf("bytes a change: %.2f with the journal", double(sizeOf(file)) / total);
    recorder = Error{};
    std::printf(", %.2f closed\n", double(sizeOf(file)) / total);
    return 0;
}

int logAsBefore(const QString& file, int values, qint64 seconds)
{
    Plant plant(values);
    auto log = log::SqliteLog::open(file);
    if (!log)
        return fail(log.error().text);
    for (qint64 second = 0; second < seconds; ++second) {
        QVector<log::LogRecord> records;
        const qint64 time = plant.time(second);
        for (int i = 0; i < values; ++i) {
            const float value = plant.next(i);
            log::LogRecord record;
            record.time = time;
            record.label = QStringLiteral("Plant.value[%1]").arg(i);
            record.value = values::valueText(*values::findIecType(QStringLiteral("REAL")), value);
            record.number = double(value);
            records.append(record);
        }
        if (const Expected<void> done = (*log)->write(records); !done)
            return fail(done.error().text);
    }
    log = Error{};
    std::printf("bytes a change in a log of version 1.0: %.2f\n",
                double(sizeOf(file)) / (double(seconds) * values));
    return 0;
}

/// One after the other with one reader, at once with several.
int open(const QString& file, int values, qint64 seconds, int readers)
{
    QElapsedTimer clock;
    clock.start();
    std::atomic<int> next{0};
    std::atomic<int> points{0};
    std::vector<std::thread> threads;
    const auto read = [&] {
        const auto reader = recorder::Reader::open(file);
        for (int i = next++; reader && i < kShown; i = next++) {
            const auto aggregates = (*reader)->aggregates(
                1 + i * values / kShown, kStart, kStart + seconds * 1000, seconds * 1000 / kPoints);
            points += aggregates ? int(aggregates->size()) : 0;
        }
    };
    for (int i = 0; i < readers; ++i)
        threads.emplace_back(read);
    for (std::thread& thread : threads)
        thread.join();
    std::printf("opened: %d values, %d points in all, by %d readers, in %lld ms\n", kShown,
                points.load(), readers, clock.elapsed());
    return points == kShown * kPoints ? 0 : fail(QStringLiteral("not all points were read"));
}

} // namespace
} // namespace plc

int main(int count, char** arguments)
{
    if (count < 2)
        return plc::fail(
            QStringLiteral("usage: bench_recorder FOLDER [VALUES [SECONDS [READERS]]]"));
    const QString folder = QString::fromLocal8Bit(arguments[1]);
    const int values = count > 2 ? std::atoi(arguments[2]) : 1000;
    const qint64 seconds = count > 3 ? std::atoi(arguments[3]) : 86400;
    const QString recording = folder + QStringLiteral("/recording.sqlite");
    int failed = 0;
    // A recording that is there is opened alone, which shows it cold.
    if (!QFileInfo::exists(recording)) {
        failed = plc::record(recording, values, seconds) ||
                 plc::logAsBefore(folder + QStringLiteral("/log.sqlite"), values, seconds / 100);
    }
    const int readers = count > 4 ? std::atoi(arguments[4]) : 4;
    return failed || plc::open(recording, values, seconds, readers);
}
