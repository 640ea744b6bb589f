#include "panel/access/login_queue.h"

#include <utility>

namespace plc::panel {

LoginQueue::LoginQueue() : m_thread([this] { run(); }) {}

LoginQueue::~LoginQueue()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_change.notify_one();
    m_thread.join();
}

bool LoginQueue::submit(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (int(m_waiting.size()) >= kMostWaiting)
            return false;
        m_waiting.push_back(std::move(work));
    }
    m_change.notify_one();
    return true;
}

void LoginQueue::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_change.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        if (m_isEnding)
            return;
        const std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace plc::panel
