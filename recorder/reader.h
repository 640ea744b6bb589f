#ifndef PLC_RECORDER_READER_H
#define PLC_RECORDER_READER_H

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <limits>
#include <memory>
#include <optional>

#include "recorder/aggregate.h"
#include "recorder/change.h"
#include "recorder/run.h"
#include "recorder/series.h"
#include "values/expected.h"

namespace plc::recorder {

/// The samples of a range of time.
struct History {
    /// What the series held before the range, with its own time; a gap where nothing is known.
    Sample before;
    /// Those of the range in the order of time, with gaps as samples of that quality.
    QVector<Sample> samples;
    /// There are more than were asked for; `samples` has nothing of use.
    bool isCut = false;
};

/// Milliseconds since 1970-01-01T00:00:00Z, from one up to another, which is not part of it.
struct TimeRange {
    qint64 from = std::numeric_limits<qint64>::min();
    qint64 to = std::numeric_limits<qint64>::max();
};

/// Reads a recording, also while another thread or process records it. Each call sees one state of
/// the file. An object is used by one thread at a time.
///
/// Where the clock went back and times were recorded twice, the later record holds: what was
/// recorded before for times from a record's own on is not part of the history of its series.
/// forEachChange() gives that, too.
class Reader {
public:
    static constexpr qint64 kAll = std::numeric_limits<qint64>::max();
    /// 1.5 MB, and more than are told late.
    static constexpr qint64 kMostKept = 65536;

    static Expected<std::unique_ptr<Reader>> open(const QString& path);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    /// Whether the path still leads to the file; else what is recorded there now is in another one.
    bool isAtItsPath() const;
    /// What runs ends soon with an error, and so does all that follows. For any thread.
    void interrupt();

    /// In the order in which they were first recorded.
    Expected<QVector<Series>> series();
    /// Stretches of recording, in the order in which they were recorded.
    Expected<QVector<Run>> runs();

    /// What a series held at `time`, with the time of that sample; a gap where nothing is known.
    Expected<Sample> valueAt(int series, qint64 time);
    /// What each series that was ever recorded holds, as far as is recorded, in the order of
    /// series: its last sample, or a gap where its run is over.
    Expected<QVector<Change>> lastValues();

    /// The run in which each series that was ever recorded was recorded last, by series.
    Expected<QMap<int, qint64>> lastRuns();

    /// Every change in [from, to) exactly, unless they are more than `most`, or their values have
    /// more than `mostBytes`.
    Expected<History> changes(const SeriesIds& series, qint64 from, qint64 to, qint64 most = kAll,
                              qint64 mostBytes = kAll);

    /// Aggregates of a series that isNumeric(), or has no type, in steps of `step` ms, which is
    /// above 0. They are summed as they are read; the latest `mostKept` changes are in memory.
    /// Where more than these were recorded again it is read twice.
    Expected<QVector<Aggregate>> aggregates(const SeriesIds& series, qint64 from, qint64 to,
                                            qint64 step, qint64 mostKept = kMostKept);

    /// All calls of `work`, which are about these series, see one state of the file, whose latest
    /// changes are looked through once for all.
    Expected<void> inOneState(const QVector<int>& series, const std::function<void()>& work);

    /// All that was recorded of these times, also what was recorded before the clock went back: run
    /// by run, in a run in the order of time, where each series keeps the order in which it was
    /// recorded. At the end of a run each series that holds something gets a gap. Ends early when
    /// `visit` returns false.
    Expected<void> forEachChange(const TimeRange& range,
                                 const std::function<bool(const Change&)>& visit);
    /// How many changes are recorded, without gaps at the ends of runs.
    Expected<qint64> countChanges();

private:
    class Implementation;
    explicit Reader(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> m_implementation;
};

} // namespace plc::recorder

#endif
