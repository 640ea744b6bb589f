#ifndef PLC_PANEL_API_HISTORY_QUERIES_H
#define PLC_PANEL_API_HISTORY_QUERIES_H

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "panel/api/history_answer.h"
#include "service/worker_threads.h"

namespace plc::panel {

/// Reads a recording, in threads of its own: neither values nor requests wait for the disk.
///
/// Thread safety: all functions may be called by any thread.
class HistoryQueries {
public:
    static constexpr int kMostWaiting = 32;
    /// Several pages ask at once, and a disk that is busy serves several sooner than one.
    static constexpr int kReaders = 4;

    explicit HistoryQueries(const QString& file, const HistoryLimits& limits = {});
    ~HistoryQueries();

    void readSeries(const HistoryQuestion& question, const Responder& respond);
    void readCsv(const HistoryQuestion& question, const Responder& respond);

    using Work = std::function<Response(recorder::Reader*)>;
    /// What is made of the recording.
    void read(const Responder& respond, Work work);

    /// Questions of the past are refused from now on, also those that are being answered: the
    /// program does not wait for them when it ends.
    void stop();

    /// Other work that waits for a disk.
    void submit(const Responder& respond, std::function<Response()> work);

private:
    using Readers = std::vector<std::unique_ptr<recorder::Reader>>;

    Response answer(const Work& work);
    Expected<recorder::Reader*> takeReader();
    void giveBack(recorder::Reader* reader);

    const QString m_file;
    const HistoryLimits m_limits;
    std::mutex m_mutex;
    Readers m_idle; ///< Guarded by the mutex, as are those that work.
    Readers m_busy;
    std::atomic<int> m_waiting{0};
    std::atomic<bool> m_isStopping{false};
    service::WorkerThreads m_threads; ///< End before what they use.
};

} // namespace plc::panel

#endif
