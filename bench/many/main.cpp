// Memory and processor time of a host with many PLCs in one process, and what becomes of it when
// one of them fails and comes back. Prints a line for each figure; ends with 1 when one is missed.

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QRandomGenerator>

#include <cstdio>
#include <functional>

#include <sys/resource.h>

#include "bench/support/measured_loop.h"
#include "bench/support/process_figures.h"
#include "plant.h"
#include "simulators.h"

namespace plc::bench {
namespace {

constexpr int kPlants = 50;
constexpr int kMeasuredSeconds = 20;
constexpr int kPatience = 60000;       // ms
constexpr double kMostMemory = 400;    // KiB a plant
constexpr double kMostProcessor = 0.5; // ms a plant and second

using Plants = std::vector<std::unique_ptr<Plant>>;

/// Finer than what the system tells of other processes.
double ownProcessorMs()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval& time) {
        return 1e3 * double(time.tv_sec) + 1e-3 * double(time.tv_usec);
    };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

/// Ends with a message as soon as one is.
void requireNoneWrong(const Plants& plants)
{
    for (size_t i = 0; i < plants.size(); ++i) {
        if (const int wrong = plants[i]->wrongValues())
            qFatal("plant %d shows %d wrong values as good", int(i), wrong);
    }
}

bool allGood(const Plants& plants)
{
    requireNoneWrong(plants);
    for (const std::unique_ptr<Plant>& plant : plants) {
        if (plant->goodValues() < kValues)
            return false;
    }
    return true;
}

/// One plant fails and comes back. Returns whether no other was disturbed.
bool failAndReturn(const Plants& plants, Simulators* simulators)
{
    const int failing = int(QRandomGenerator::global()->bounded(kPlants));
    int mostBad = 0;
    const auto count = [&] {
        requireNoneWrong(plants);
        int bad = 0;
        for (int i = 0; i < kPlants; ++i)
            bad += i != failing && plants[size_t(i)]->goodValues() < kValues ? 1 : 0;
        mostBad = qMax(mostBad, bad);
    };
    simulators->kill(failing);
    runUntil(
        "the plant has no good value",
        [&] {
            count();
            return plants[size_t(failing)]->goodValues() == 0;
        },
        kPatience);
    simulators->start(failing);
    const qint64 time = runUntil(
        "all values are good again",
        [&] {
            count();
            return plants[size_t(failing)]->goodValues() == kValues;
        },
        kPatience);
    quint64 losses = 0;
    for (int i = 0; i < kPlants; ++i)
        losses += i == failing ? 0 : plants[size_t(i)]->losses();
    std::printf("plant %d was killed: all %d values good %lld ms after it was back\n", failing,
                kValues, static_cast<long long>(time));
    std::printf("%d other plants lost a value, their links were lost %llu times\n", mostBad,
                static_cast<unsigned long long>(losses));
    return mostBad == 0 && losses == 0;
}

int run(const char* program)
{
    std::printf("%s: %d plants of %d values every second\n", program, kPlants, kValues);
    Simulators simulators(kPlants);
    const project::Symbols symbols = plantSymbols();
    Plants plants;
    const double memoryBefore = privateKib(QCoreApplication::applicationPid());
    for (int i = 0; i < kPlants; ++i) {
        const auto copy = host::DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY));
        if (!copy)
            qFatal("%s", qPrintable(copy.error().text));
        plants.push_back(std::make_unique<Plant>(*copy, symbols, i, simulators.port(i)));
    }
    runUntil(
        "all values are good", [&plants] { return allGood(plants); }, kPatience);
    const double processorBefore = ownProcessorMs();
    runFor(1000 * kMeasuredSeconds);
    requireNoneWrong(plants);
    const double processor = (ownProcessorMs() - processorBefore) / kMeasuredSeconds / kPlants;
    const double memory = (privateKib(QCoreApplication::applicationPid()) - memoryBefore) / kPlants;
    bool isMet = printFigure("private memory of a plant", memory, kMostMemory, "KiB");
    isMet = printFigure("processor time of a plant and second", processor, kMostProcessor, "ms") &&
            isMet;
    isMet = failAndReturn(plants, &simulators) && isMet;
    return isMet ? 0 : 1;
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return plc::bench::run(argv[0]);
}
