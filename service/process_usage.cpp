#include "service/process_usage.h"

#include <sys/resource.h>
#include <unistd.h>

#include <QtCore/QFile>

namespace plc::service {
namespace {

double seconds(const timeval& time)
{
    constexpr double kMicroseconds = 1e-6;
    return double(time.tv_sec) + double(time.tv_usec) * kMicroseconds;
}

} // namespace

ProcessUsage processUsage()
{
    ProcessUsage usage;
    rusage resources = {};
    if (::getrusage(RUSAGE_SELF, &resources) == 0)
        usage.processorTime = seconds(resources.ru_utime) + seconds(resources.ru_stime);
    QFile memory(QStringLiteral("/proc/self/statm")); // pages: all, resident, …
    if (memory.open(QIODevice::ReadOnly))
        usage.residentBytes =
            memory.readLine().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
    return usage;
}

} // namespace plc::service
