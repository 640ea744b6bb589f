#ifndef PLC_PANEL_ACCESS_LOGIN_QUEUE_H
#define PLC_PANEL_ACCESS_LOGIN_QUEUE_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace plc::panel {

/// Does slow work on a thread of its own, one after the other: so many passwords that are tried
/// take no more than one processor, and no time of those who answer requests.
class LoginQueue {
public:
    static constexpr int kMostWaiting = 8;

    LoginQueue();
    /// Waits for the work under way; what waits is dropped.
    ~LoginQueue();
    LoginQueue(const LoginQueue&) = delete;
    LoginQueue& operator=(const LoginQueue&) = delete;

    /// For any thread. False, and the work is dropped, when too much waits.
    bool submit(std::function<void()> work);

private:
    void run();

    std::mutex m_mutex; ///< Guards all below but the thread.
    std::condition_variable m_change;
    std::deque<std::function<void()>> m_waiting;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace plc::panel

#endif
