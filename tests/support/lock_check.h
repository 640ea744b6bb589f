#ifndef PLC_TESTS_SUPPORT_LOCK_CHECK_H
#define PLC_TESTS_SUPPORT_LOCK_CHECK_H

#include <QtCore/QMutex>

#include <atomic>
#include <functional>
#include <thread>

namespace plc {
namespace test {

/// True when `call` cannot end while another thread holds `mutex`.
inline bool waitsFor(QMutex& mutex, const std::function<void()>& call)
{
    const int kTurnsToEndTooEarly = 2000;
    std::atomic<bool> begun(false);
    std::atomic<bool> released(false);
    bool endedAfterRelease = false;
    mutex.lock();
    std::thread thread([&] {
        begun = true;
        call();
        endedAfterRelease = released;
    });
    while (!begun)
        std::this_thread::yield();
    for (int i = 0; i < kTurnsToEndTooEarly; ++i)
        std::this_thread::yield();
    released = true;
    mutex.unlock();
    thread.join();
    return endedAfterRelease;
}

} // namespace test
} // namespace plc

#endif
