#ifndef PLC_PANEL_API_HISTORY_QUERIES_H
#define PLC_PANEL_API_HISTORY_QUERIES_H

#include <QtCore/QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "panel/api/history_answer.h"

namespace plc::panel {

/// Reads a recording, in threads of its own: neither values nor requests wait for the disk.
///
/// Thread safety: all functions may be called by any thread.
class HistoryQueries {
public:
    static constexpr int kMostWaiting = 32;
    /// A trend asks for its curves at once, and a disk that is busy serves several sooner than one.
    static constexpr int kReaders = 4;

    explicit HistoryQueries(const QString& file, const HistoryLimits& limits = {});
    ~HistoryQueries();

    void readSeries(const HistoryQuestion& question, const Responder& respond);
    void readCsv(const HistoryQuestion& question, const Responder& respond);

    /// Questions of the past that nobody has begun to answer are refused from now on: the program
    /// does not wait for them when it ends.
    void stop() { m_isStopping = true; }

    /// Other work that waits for a disk.
    void submit(const Responder& respond, std::function<Response()> work);

private:
    using Answer = Response (*)(recorder::Reader*, const HistoryQuestion&, const HistoryLimits&);

    Response answer(Answer answerOf, const HistoryQuestion& question);
    Expected<std::unique_ptr<recorder::Reader>> takeReader();

    const QString m_file;
    const HistoryLimits m_limits;
    std::mutex m_mutex;
    std::vector<std::unique_ptr<recorder::Reader>> m_idle; ///< Guarded by the mutex.
    std::atomic<int> m_waiting{0};
    std::atomic<bool> m_isStopping{false};
    QThreadPool m_pool; ///< Ends before what its threads use.
};

} // namespace plc::panel

#endif
