#include "service/worker_threads.h"

#include <utility>

namespace plc::service {

WorkerThreads::WorkerThreads(int count)
{
    for (int i = 0; i < count; ++i)
        m_threads.emplace_back([this] { run(); });
}

WorkerThreads::~WorkerThreads()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void WorkerThreads::submit(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    m_changed.notify_one();
}

void WorkerThreads::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        if (m_waiting.empty())
            return;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        work();
        work = nullptr; // Which may hold what is not to be destroyed under the lock.
        lock.lock();
    }
}

} // namespace plc::service
