#include "service/service_manager.h"

#include <systemd/sd-daemon.h>
#include <time.h>

#include <limits>

#include "values/visible_text.h"

namespace plc::service {
namespace {

constexpr int kKeepsEnvironment = 0;
constexpr std::uint64_t kMicrosecondsInMillisecond = 1000;
constexpr qint64 kMicrosecondsInSecond = 1000000;

void tell(const QByteArray& state)
{
    ::sd_notify(kKeepsEnvironment, state.constData());
}

/// Microseconds of the clock that the service manager compares with.
QByteArray monotonicTime()
{
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return QByteArray::number(qint64(now.tv_sec) * kMicrosecondsInSecond + now.tv_nsec / 1000);
}

} // namespace

void ServiceManager::readyWithin(qint64 seconds)
{
    tell("EXTEND_TIMEOUT_USEC=" + QByteArray::number(seconds * kMicrosecondsInSecond));
}

void ServiceManager::ready()
{
    tell("READY=1");
}

void ServiceManager::status(const QString& line)
{
    if (line == m_status)
        return;
    m_status = line;
    // Each line of the message is a variable of its own.
    tell("STATUS=" + values::visibleText(line).toUtf8());
}

void ServiceManager::alive()
{
    tell("WATCHDOG=1");
}

void ServiceManager::reloading()
{
    tell("RELOADING=1\nMONOTONIC_USEC=" + monotonicTime());
}

void ServiceManager::stopping()
{
    tell("STOPPING=1");
}

std::optional<int> ServiceManager::watchdogInterval()
{
    std::uint64_t microseconds = 0;
    if (::sd_watchdog_enabled(kKeepsEnvironment, &microseconds) <= 0)
        return {};
    const std::uint64_t half = microseconds / kMicrosecondsInMillisecond / 2;
    constexpr std::uint64_t kLongest = std::numeric_limits<int>::max();
    return int(half < 1 ? 1 : half > kLongest ? kLongest : half);
}

} // namespace plc::service
