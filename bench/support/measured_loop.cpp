#include "bench/support/measured_loop.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <cstdio>

namespace plc::bench {
namespace {

constexpr int kLookInterval = 10; // ms

} // namespace

void runFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

qint64 runUntil(const char* what, const std::function<bool()>& condition, int longest)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.hasExpired(longest))
            qFatal("waited in vain until %s", what);
        runFor(kLookInterval);
    }
    return clock.elapsed();
}

bool printFigure(const char* name, double value, double most, const char* unit)
{
    std::printf("%-52s %10.2f %s, at most %.2f: %s\n", name, value, unit, most,
                value <= most ? "met" : "MISSED");
    std::fflush(stdout);
    return value <= most;
}

} // namespace plc::bench
