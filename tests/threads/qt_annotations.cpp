// ThreadSanitizer sees the locks and atomic counters of code that it was built into, not those
// inside Qt's library.
//
// QMutex waits there (with Qt 5 it locks there in any case); the functions here stand in front of
// Qt's own and tell it. Only the calls that the linker binds in this executable, the driver's among
// them, come here.
//
// Qt's assignment of strings counts references down there and frees what nothing refers to any
// more; frees by Qt itself are not looked at.

#include <QtCore/QMutex>

#if defined(__SANITIZE_THREAD__)
#define PLC_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define PLC_THREAD_SANITIZER 1
#endif
#endif

#ifdef PLC_THREAD_SANITIZER

#include <sanitizer/tsan_interface.h>

#include "support/qt_function.h"

extern "C" {

__attribute__((visibility("default"))) const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return "called_from_lib:libQt5Core.so\n";
#else
    return "called_from_lib:libQt6Core.so\n";
#endif
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

void lockAnnotated(QMutex* mutex) noexcept __asm__("_ZN6QMutex4lockEv");
void lockAnnotated(QMutex* mutex) noexcept
{
    static const auto lock = plc::test::inQt<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    lock(mutex);
    __tsan_acquire(mutex);
}

bool tryLockAnnotated(QMutex* mutex, int timeout) noexcept __asm__("_ZN6QMutex7tryLockEi");
bool tryLockAnnotated(QMutex* mutex, int timeout) noexcept
{
    static const auto tryLock = plc::test::inQt<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    const bool isLocked = tryLock(mutex, timeout);
    if (isLocked)
        __tsan_acquire(mutex);
    return isLocked;
}

void unlockAnnotated(QMutex* mutex) noexcept __asm__("_ZN6QMutex6unlockEv");
void unlockAnnotated(QMutex* mutex) noexcept
{
    static const auto unlock = plc::test::inQt<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(mutex);
    unlock(mutex);
}

#else

void lockAnnotated(QBasicMutex* mutex) noexcept __asm__("_ZN11QBasicMutex12lockInternalEv");
void lockAnnotated(QBasicMutex* mutex) noexcept
{
    static const auto lock =
        plc::test::inQt<void (*)(QBasicMutex*)>("_ZN11QBasicMutex12lockInternalEv");
    lock(mutex);
    __tsan_acquire(mutex);
}

void unlockAnnotated(QBasicMutex* mutex) noexcept __asm__("_ZN11QBasicMutex14unlockInternalEv");
void unlockAnnotated(QBasicMutex* mutex) noexcept
{
    static const auto unlock =
        plc::test::inQt<void (*)(QBasicMutex*)>("_ZN11QBasicMutex14unlockInternalEv");
    __tsan_release(mutex);
    unlock(mutex);
}

#endif
}

#endif
