#include "tests/support/hanging_disk.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace plc::test {

Gate& diskGate()
{
    static Gate gate;
    return gate;
}

} // namespace plc::test

// The system's calls, which SQLite takes from the program where it has them.

extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor)
{
    plc::test::diskGate().pass();
    return int(::syscall(SYS_fdatasync, descriptor));
}

extern "C" __attribute__((visibility("default"))) int fsync(int descriptor)
{
    plc::test::diskGate().pass();
    return int(::syscall(SYS_fsync, descriptor));
}
