#ifndef PLC_RECORDER_RECORDER_H
#define PLC_RECORDER_RECORDER_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <memory>
#include <optional>

#include "recorder/change.h"
#include "recorder/series.h"
#include "values/expected.h"

namespace plc::recorder {

/// How much a recording may hold. When it is more the oldest goes, of all series alike; what a
/// series held at the end of what went stays.
struct Limits {
    /// Smallest size that can be asked for.
    static constexpr qint64 kSmallest = qint64(1024) * 1024;

    qint64 size = 0; ///< Bytes of the file, without the journal beside it; 0: as large as it gets.
    /// Milliseconds; up to a 32nd more is kept, and more while the time is not confirmed, see
    /// Recorder::append(). 0: without end.
    qint64 age = 0;
    /// Bytes of changes as they came, before they are put together by series: few make small
    /// writes, many a slow start of reading. 0: as befits the number of series.
    qint64 unsorted = 0;
};

/// Records changes of values in a file, an SQLite database.
///
/// 1. What append() has returned success for is on the disk, whole, and outlives the process and
///    the power. After an error nothing of that call is there, and what was there before can be
///    read.
/// 2. Nothing else is there: a recording that ends without end(), and one that lost changes, shows
///    a gap from the last time that was brought to the disk.
/// 3. Within a run, from its begin to its end or a gap, a series holds its last sample. Whoever
///    begins a run gives each series once.
/// 4. Time is an argument. When it goes back a new run begins, in which each series is given again
///    as it was; see Reader for what is read then.
///
/// One process records into a file, in one thread at a time; any number may read it.
class Recorder {
public:
    /// Begins a recording, or goes on with it where the file exists. A database that is no
    /// recording is left as it is. `isMediumFailing`, unless null, tells whether an error came
    /// because nothing could be written, and not because of the path.
    static Expected<std::unique_ptr<Recorder>> open(const QString& path, const Limits& limits,
                                                    qint64 now, bool* isMediumFailing = nullptr);
    /// Ends the recording at the last time that was given.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Number of a series, which stays the same as long as the file does; for this object also
    /// behind a file that was moved or removed. It comes onto the disk with the next change.
    int series(const SeriesDescription& description);

    /// Records changes, each at most as late as `now`, in the order of the times at which they are
    /// told. To be called about once a second also without changes: until `now` the series are
    /// known to have held their values.
    ///
    /// Where the file was moved or removed, which is looked for every second, it ends there and
    /// goes on in a new one at the path, in which each series holds what it held; an error as long
    /// as none can be begun. A recording that stands at the path meanwhile is gone on with.
    ///
    /// `steady` is in ms of a clock that nobody sets. By age is removed only what was too old when
    /// both clocks had gone along for an hour, and as time passes by this one: a clock that is
    /// wrong for a minute removes nothing. Without it `now` is trusted.
    Expected<void> append(const QVector<Change>& changes, qint64 now,
                          std::optional<qint64> steady = {});

    /// What append() failed for, or what was never given to it, is given up: the series show a gap
    /// from the last success to the next one, where they hold what was given here.
    void giveUp(const QVector<Change>& changes);

    /// Nobody looked at the values since the last append(): the series show a gap from there to the
    /// next one, where they hold what they held, or what that gives.
    void interrupt();

    /// Ends the recording; append() begins it anew.
    Expected<void> end(qint64 now);

    /// Why the last attempt failed to put what was recorded in order, or to remove what is too old;
    /// empty after a success. It is tried again; nothing is lost.
    QString maintenanceError() const;
    /// How often the file was moved or removed, and another one gone on with.
    int changedFiles() const;
    /// Changes recorded by this object, without those that a deadband left out.
    qint64 recordedChanges() const;
    /// Bytes of the file that are used.
    qint64 usedBytes() const;

private:
    class Implementation;
    explicit Recorder(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> m_implementation;
};

} // namespace plc::recorder

#endif
