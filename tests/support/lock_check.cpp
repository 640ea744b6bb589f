// Tells whether a call waits for a mutex, without a guess at how long it would take to do so: Qt's
// function that locks is replaced by one that says when it is about to wait. Only the calls that
// the linker binds in this executable, the driver's among them, come here.

#include "support/lock_check.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "support/qt_function.h"

namespace {

/// What has become of the call that is under test.
struct Watch {
    std::mutex mutex;
    std::condition_variable changed;
    const void* watched = nullptr;
    bool isWaiting = false;
    bool hasEnded = false;
};

Watch watch;

void aboutToWait(const void* mutex)
{
    const std::lock_guard<std::mutex> lock(watch.mutex);
    if (mutex != watch.watched)
        return;
    watch.isWaiting = true;
    watch.changed.notify_all();
}

} // namespace

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

extern "C" __attribute__((visibility("default"))) void lockWatched(QMutex* mutex) __asm__(
    "_ZN6QMutex4lockEv");
void lockWatched(QMutex* mutex)
{
    static const auto lock = plc::test::inQt<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    if (mutex->tryLock())
        return;
    aboutToWait(mutex);
    lock(mutex);
}

#else

// The inline part of QMutex::lock() comes here only when it has to wait.
extern "C" __attribute__((visibility("default"))) void lockWatched(QBasicMutex* mutex) noexcept
    __asm__("_ZN11QBasicMutex12lockInternalEv");
void lockWatched(QBasicMutex* mutex) noexcept
{
    static const auto lock =
        plc::test::inQt<void (*)(QBasicMutex*)>("_ZN11QBasicMutex12lockInternalEv");
    aboutToWait(mutex);
    lock(mutex);
}

#endif

namespace plc::test {

bool waitsFor(QMutex& mutex, const std::function<void()>& call)
{
    mutex.lock();
    {
        const std::lock_guard<std::mutex> lock(watch.mutex);
        watch.watched = &mutex;
        watch.isWaiting = false;
        watch.hasEnded = false;
    }
    std::thread thread([&] {
        call();
        const std::lock_guard<std::mutex> lock(watch.mutex);
        watch.hasEnded = true;
        watch.changed.notify_all();
    });
    bool isWaiting;
    {
        std::unique_lock<std::mutex> lock(watch.mutex);
        watch.changed.wait(lock, [] { return watch.isWaiting || watch.hasEnded; });
        isWaiting = watch.isWaiting;
        watch.watched = nullptr;
    }
    mutex.unlock();
    thread.join();
    return isWaiting;
}

} // namespace plc::test
