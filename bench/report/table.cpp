#include "table.h"

#include <cstdio>

namespace plc::bench {

namespace {

/// "3.10", or "-" where there is nothing to compare with.
QString shown(double ratio)
{
    constexpr double kWholeFrom = 10;
    return ratio > 0 ? QString::number(ratio, 'f', ratio < kWholeFrom ? 2 : 0)
                     : QString(QLatin1Char('-'));
}

void printRow(const Measurements& measurements, const QString& work)
{
    const QString driver = work + QLatin1String("/driver");
    const QString baseline = work + QLatin1String("/baseline");
    const QString floor = work + QLatin1String("/floor");
    const auto median = [&](double (*valueOf)(const Measurement&), const QString& name) {
        return measurements.median([&](const Round& round) { return valueOf(round.value(name)); });
    };
    std::printf("%-62s %10.1f %10s %9s %12.6g %14.8g\n", qPrintable(work),
                median([](const Measurement& one) { return one.time / one.variables; }, driver),
                qPrintable(shown(measurements.timeRatio(baseline, driver))),
                qPrintable(shown(measurements.timeRatio(driver, floor))),
                median([](const Measurement& one) { return one.allocations; }, driver),
                median([](const Measurement& one) { return one.bytes; }, driver));

    const auto heldPerByte = [](const Measurement& one) { return one.held / one.variables; };
    if (median(heldPerByte, driver) > 0)
        std::printf("%-62s %10.3f bytes of heap a byte, baseline %s\n", "",
                    median(heldPerByte, driver), qPrintable(shown(median(heldPerByte, baseline))));
}

} // namespace

void printTable(const Measurements& measurements)
{
    std::printf("Driver with Qt %s: medians of the rounds' processor times\n\n",
                qPrintable(measurements.qtVersion()));
    std::printf("%-62s %10s %10s %9s %12s %14s\n", "work", "ns a", "times", "times", "allocations",
                "bytes");
    std::printf("%-62s %10s %10s %9s %12s %14s\n", "", "variable", "baseline", "floor", "a call",
                "a call");
    for (const QString& work : measurements.works()) {
        if (measurements.contains(work + QLatin1String("/driver")))
            printRow(measurements, work);
    }
    std::printf(
        "\ntimes baseline: how many times faster than the straightforward way; "
        "times floor: how many times the time of the floor\n\n");
}

} // namespace plc::bench
