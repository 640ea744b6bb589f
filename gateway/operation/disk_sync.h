#ifndef PLC_GATEWAY_OPERATION_DISK_SYNC_H
#define PLC_GATEWAY_OPERATION_DISK_SYNC_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace plc::gateway {

/// Brings files onto the disk in a thread of its own, one after the other: a slow disk takes
/// seconds for it, in which other work goes on. All calls are for one thread.
class DiskSync {
public:
    /// Returns when what was written to the file is on the disk: 0, or the number of an error.
    using Sync = std::function<int(int file)>;

    explicit DiskSync(Sync sync);
    /// Returns when all that was begun has ended.
    ~DiskSync();
    DiskSync(const DiskSync&) = delete;
    DiskSync& operator=(const DiskSync&) = delete;

    /// Takes the file over and closes it in the end.
    void begin(int file);
    /// How many have not ended.
    int running() const;
    /// Of those that ended since the last call the first error, or 0; nothing if none ended.
    std::optional<int> takeResult();

private:
    void run();

    const Sync m_sync;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<int> m_files; ///< The first one is being brought onto the disk.
    std::optional<int> m_result;
    bool m_isEnding = false;
    std::thread m_thread;
};

/// As DiskSync::Sync. What has no disk behind it, as a pipe, is no error.
int bringOntoDisk(int file);

} // namespace plc::gateway

#endif
