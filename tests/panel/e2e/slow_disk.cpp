// The system's calls that bring a file onto the disk, with a disk that does not answer as long as a
// file is there whose name the environment tells.

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>

namespace {

constexpr useconds_t kPause = 1000; // microseconds

void waitForDisk()
{
    const char* const file = std::getenv("PLC_SLOW_DISK");
    while (file && ::access(file, F_OK) == 0)
        ::usleep(kPause);
}

} // namespace

extern "C" int fdatasync(int descriptor)
{
    waitForDisk();
    return int(::syscall(SYS_fdatasync, descriptor));
}

extern "C" int fsync(int descriptor)
{
    waitForDisk();
    return int(::syscall(SYS_fsync, descriptor));
}
