#ifndef PLC_RECORDER_RECORDER_THREAD_H
#define PLC_RECORDER_RECORDER_THREAD_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <memory>

#include "recorder/change_queue.h"
#include "recorder/recorder.h"

namespace plc::recorder {

/// What has come of the changes.
struct RecorderStatus {
    qint64 recorded = 0; ///< On the disk.
    qint64 waiting = 0;
    qint64 dropped = 0; ///< Shown as a gap: the disk was full or too slow.
    qint64 usedBytes = 0;
    /// Why nothing can be recorded at present; empty while it works. It is tried again each second.
    QString error;
};

/// A Recorder in a thread of its own. The functions never wait for the disk; they are called by one
/// thread, status() by any.
class RecorderThread {
public:
    /// Opens the file, which may wait for the disk, and starts the thread.
    static Expected<std::unique_ptr<RecorderThread>> start(const QString& path,
                                                           const Limits& limits, qint64 now,
                                                           const QueueLimits& queue = {});
    /// Records what waits, for a few seconds at most, and ends the recording.
    ~RecorderThread();
    RecorderThread(const RecorderThread&) = delete;
    RecorderThread& operator=(const RecorderThread&) = delete;

    /// Number of a series for append() here; it is not that on the disk.
    int series(const SeriesDescription& description);

    /// As Recorder::append(). What the queue has no room for is dropped and shows as a gap; behind
    /// it the series hold what they were given last.
    void append(const QVector<Change>& changes, qint64 now);

    /// As Recorder::interrupt().
    void interrupt();

    RecorderStatus status() const;

private:
    class Implementation;
    explicit RecorderThread(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> m_implementation;
};

} // namespace plc::recorder

#endif
