// Loaded before the C library of a program: its wall clock goes wrong by the milliseconds that
// stand in the file of PLC_CLOCK_SHIFT, as if somebody had set it. Clocks that nobody can set stay
// right.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace {

using Shift = std::atomic<std::int64_t>;

constexpr std::int64_t kMillisecondsOfSecond = 1000;
constexpr std::int64_t kNanosecondsOfMillisecond = 1000 * 1000;
constexpr std::int64_t kNanosecondsOfSecond = kMillisecondsOfSecond * kNanosecondsOfMillisecond;

const Shift* openShift()
{
    static const Shift none{0};
    const char* const path = std::getenv("PLC_CLOCK_SHIFT");
    const int file = path ? ::open(path, O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0)
        return &none;
    void* const place = ::mmap(nullptr, sizeof(Shift), PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    return place == MAP_FAILED ? &none : static_cast<const Shift*>(place);
}

int realClock(clockid_t clock, timespec* time)
{
    using Function = int (*)(clockid_t, timespec*);
    static const auto real = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "clock_gettime"));
    return real(clock, time);
}

void shift(timespec* time)
{
    static const Shift* const shift = openShift();
    const std::int64_t nanoseconds = std::int64_t(time->tv_sec) * kNanosecondsOfSecond +
                                     time->tv_nsec + shift->load() * kNanosecondsOfMillisecond;
    time->tv_sec = time_t(nanoseconds / kNanosecondsOfSecond);
    time->tv_nsec = long(nanoseconds % kNanosecondsOfSecond);
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const int result = realClock(clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        shift(time);
    return result;
}

extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, suseconds_t(now.tv_nsec / 1000)};
    return 0;
}

extern "C" time_t time(time_t* result) noexcept
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}
