#ifndef PLC_SERVICE_WORKER_THREADS_H
#define PLC_SERVICE_WORKER_THREADS_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace plc::service {

/// Threads that do what they are given, each piece of work by the first one that is free.
///
/// Thread safety: submit() may be called by any thread.
class WorkerThreads {
public:
    explicit WorkerThreads(int count);
    /// Waits until all that was submitted is done.
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    void submit(std::function<void()> work);

private:
    void run();

    std::mutex m_mutex; ///< Guards what waits.
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

} // namespace plc::service

#endif
