#include "table.h"

#include <cstdio>

namespace plc {
namespace bench {

namespace {

/// "3.10", or "-" without one side.
QString ratio(double of, double to)
{
    return of > 0 && to > 0 ? QString::number(of / to, 'f', of / to < 10 ? 2 : 0)
                            : QString(QLatin1Char('-'));
}

void printRow(const Measurements& measurements, const QString& work)
{
    const Measurement driver = measurements[work + QLatin1String("/driver")];
    const Measurement baseline = measurements[work + QLatin1String("/baseline")];
    const Measurement floor = measurements[work + QLatin1String("/floor")];
    std::printf("%-54s %10.1f %10s %9s %12.6g %14.8g\n", qPrintable(work), driver.timePerVariable(),
                qPrintable(ratio(baseline.time, driver.time)),
                qPrintable(ratio(driver.time, floor.time)), driver.allocations, driver.bytes);
    if (driver.held > 0)
        std::printf("%-54s %10.3f bytes of heap a byte (baseline %.3f)\n", "",
                    driver.held / driver.variables, baseline.held / driver.variables);
}

} // namespace

void printTable(const Measurements& measurements)
{
    std::printf("Driver with Qt %s: medians of processor time\n\n",
                qPrintable(measurements.qtVersion()));
    std::printf("%-54s %10s %10s %9s %12s %14s\n", "work", "ns a", "times", "times", "allocations",
                "bytes");
    std::printf("%-54s %10s %10s %9s %12s %14s\n", "", "variable", "baseline", "floor", "a call",
                "a call");
    for (const QString& work : measurements.works()) {
        if (measurements.contains(work + QLatin1String("/driver")))
            printRow(measurements, work);
    }
    std::printf(
        "\ntimes baseline: how many times faster than the straightforward way; "
        "times floor: how many times the time of the floor\n\n");
}

} // namespace bench
} // namespace plc
