#include "service/disk_thread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace plc::service {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLastPatience(5);

} // namespace

struct DiskThread::State {
    std::mutex mutex; ///< Guards all below.
    std::condition_variable changed;
    std::deque<Work> waiting;
    std::deque<Completion> done;
    bool isBusy = false;   ///< Some work is under way.
    bool isEnding = false; ///< No more is begun.
    bool hasEnded = false;
    Wake wake;
};

DiskThread::DiskThread(Wake wake) : m_state(std::make_shared<State>())
{
    m_state->wake = std::move(wake);
    m_thread = std::thread([state = m_state] { run(state); });
}

DiskThread::~DiskThread()
{
    end(Clock::now() + kLastPatience);
}

void DiskThread::run(const std::shared_ptr<State>& state)
{
    std::unique_lock<std::mutex> lock(state->mutex);
    for (;;) {
        state->changed.wait(lock, [&] { return state->isEnding || !state->waiting.empty(); });
        if (state->isEnding)
            break;
        Work work = std::move(state->waiting.front());
        state->waiting.pop_front();
        state->isBusy = true;
        lock.unlock();
        Completion completion = work();
        work = nullptr;
        lock.lock();
        state->isBusy = false;
        if (state->isEnding)
            break;
        state->done.push_back(std::move(completion));
        state->changed.notify_all();
        // Under the lock: whoever ends has nobody called behind that.
        state->wake();
    }
    state->hasEnded = true;
    state->changed.notify_all();
}

void DiskThread::submit(Work work)
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (m_state->isEnding)
        return;
    m_state->waiting.push_back(std::move(work));
    m_state->changed.notify_all();
}

void DiskThread::deliver()
{
    std::deque<Completion> done;
    {
        const std::lock_guard<std::mutex> lock(m_state->mutex);
        done.swap(m_state->done);
    }
    for (const Completion& completion : done)
        completion();
}

bool DiskThread::drain(std::chrono::milliseconds patience)
{
    const Clock::time_point deadline = Clock::now() + patience;
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(m_state->mutex);
            const auto isIdle = [this] { return m_state->waiting.empty() && !m_state->isBusy; };
            const bool isInTime = m_state->changed.wait_until(
                lock, deadline, [&] { return !m_state->done.empty() || isIdle(); });
            if (!isInTime || m_state->done.empty())
                return isInTime;
        }
        deliver();
    }
}

bool DiskThread::finish(std::chrono::milliseconds patience)
{
    const bool isDone = drain(patience);
    end(Clock::now() + (isDone ? kLastPatience : std::chrono::seconds(0)));
    return isDone;
}

void DiskThread::end(Clock::time_point deadline)
{
    if (!m_thread.joinable())
        return;
    std::deque<Work> dropped; // which may hold what is not to be destroyed under the lock
    std::unique_lock<std::mutex> lock(m_state->mutex);
    m_state->isEnding = true;
    dropped.swap(m_state->waiting);
    m_state->changed.notify_all();
    const bool hasEnded =
        m_state->changed.wait_until(lock, deadline, [this] { return m_state->hasEnded; });
    m_state->wake = [] {};
    lock.unlock();
    // A disk that does not answer keeps nobody from ending.
    if (hasEnded)
        m_thread.join();
    else
        m_thread.detach();
}

} // namespace plc::service
