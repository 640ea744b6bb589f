#ifndef PLC_RECORDER_RECORDER_THREAD_H
#define PLC_RECORDER_RECORDER_THREAD_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <chrono>
#include <memory>
#include <thread>

#include "recorder/change_queue.h"
#include "recorder/recorder.h"

namespace plc::recorder {

/// What has come of the changes.
struct RecorderStatus {
    qint64 recorded = 0; ///< On the disk.
    qint64 waiting = 0;
    qint64 dropped = 0; ///< Shown as a gap: the disk was full or too slow.
    qint64 usedBytes = 0;
    int changedFiles = 0; ///< See Recorder::changedFiles().
    /// Why nothing can be recorded at present; empty while it works. It is tried again each second.
    QString error;
};

/// How long it is waited at the end of a recording.
struct LastPatience {
    /// So long it is tried to record what waits,
    std::chrono::milliseconds attempts = std::chrono::seconds(5);
    /// and so long the disk has behind that to answer the last attempt.
    std::chrono::milliseconds answer = std::chrono::seconds(2);
};

/// A Recorder in a thread of its own. The functions never wait for the disk; they are called by one
/// thread, status() by any.
class RecorderThread {
public:
    /// Opens the file, which may wait for the disk, and starts the thread. `isMediumFailing` as of
    /// Recorder::open().
    static Expected<std::unique_ptr<RecorderThread>> start(const QString& path,
                                                           const Limits& limits, qint64 now,
                                                           const QueueLimits& queue = {},
                                                           bool* isMediumFailing = nullptr);
    /// As finish().
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

    /// Waits until all is recorded, has it tried at once where it failed before, and returns the
    /// error of that attempt; one, too, where it takes longer.
    Expected<void> drain(std::chrono::milliseconds patience);

    /// Records what waits and ends the recording. What is dropped or waits behind that is not known
    /// to be recorded: a disk that does not answer keeps nobody from ending. Nothing is done behind
    /// it.
    RecorderStatus finish(const LastPatience& patience = {});

private:
    class Implementation;
    explicit RecorderThread(std::shared_ptr<Implementation> implementation);

    const std::shared_ptr<Implementation>
        m_implementation; ///< Shared with the thread, which may outlast this.
    std::thread m_thread;
};

} // namespace plc::recorder

#endif
