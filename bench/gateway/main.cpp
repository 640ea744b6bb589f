// Gateways under load: how much of the processor and of memory each PLC takes, how old values are
// when they reach a consumer, and whether any is lost. Prints a line for each figure; ends with 1
// when one is missed.

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>

#include <cstdio>
#include <functional>

#include "bench/gateway/consumer.h"
#include "bench/gateway/load.h"
#include "bench/support/measured_loop.h"
#include "bench/support/process_figures.h"

namespace plc::bench {
namespace {

constexpr Load::Size kSize = {4, 50, 100, 500};
constexpr int kLongestWait = 120000;   // ms
constexpr int kSettleTime = 15000;     // ms
constexpr double kMostProcessor = 1.0; // ms a PLC and second
constexpr double kMostMemory = 512.0;  // KiB a PLC
constexpr double kMostAge = 1500.0;    // ms

double sum(const std::vector<qint64>& processes, double (*figure)(qint64))
{
    double total = 0.0;
    for (qint64 process : processes)
        total += figure(process);
    return total;
}

bool report(const Consumer& consumer, double processor, double memory, double broker, int seconds)
{
    constexpr int kPlants = kSize.gateways * kSize.plants;
    bool isMet = printFigure("processor time of a PLC and second", processor / seconds / kPlants,
                             kMostProcessor, "ms");
    isMet = printFigure("private memory of a PLC", memory / kPlants, kMostMemory, "KiB") && isMet;
    isMet = printFigure("age of 99 % of the values at the consumer", consumer.agePercentile(0.99),
                        kMostAge, "ms") &&
            isMet;
    isMet = printFigure("values that are missing", double(consumer.missing()), 0.0, "") && isMet;
    isMet = printFigure("holes in the numbers of messages", double(consumer.sequenceHoles()), 0.0,
                        "") &&
            isMet;
    isMet = printFigure("deaths", double(consumer.losses()), 0.0, "") && isMet;
    std::printf("age of half of the values %d ms, of the oldest %d ms\n",
                consumer.agePercentile(0.5), consumer.agePercentile(1.0));
    std::printf(
        "%.0f values and %.0f messages a second; %llu values came as history, %llu were "
        "told twice\n",
        double(consumer.values()) / seconds, double(consumer.messages()) / seconds,
        static_cast<unsigned long long>(consumer.historical()),
        static_cast<unsigned long long>(consumer.repeated()));
    std::printf("the broker took %.2f ms of processor time for a PLC and second\n",
                broker / seconds / kPlants);
    return isMet;
}

int run(int seconds)
{
    std::printf("%d gateways, %d PLCs each, %d values each that change every second, %d s\n",
                kSize.gateways, kSize.plants, kSize.values, seconds);
    std::fflush(stdout);
    Load load(kSize);
    load.startPlants();
    runFor(1000);
    Consumer consumer(load.brokerPort());
    runUntil(
        "the consumer is connected", [&] { return consumer.isConnected(); }, kLongestWait);
    load.startGateways();
    runUntil(
        "all PLCs are there", [&] { return consumer.devices() == kSize.gateways * kSize.plants; },
        kLongestWait);
    runFor(kSettleTime);
    consumer.begin();
    const double processorBefore = sum(load.gateways(), processorMs);
    const double brokerBefore = processorMs(load.broker());
    runFor(1000 * seconds);
    const double processor = sum(load.gateways(), processorMs) - processorBefore;
    const double broker = processorMs(load.broker()) - brokerBefore;
    const double memory = sum(load.gateways(), privateKib);
    return report(consumer, processor, memory, broker, seconds) ? 0 : 1;
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    if (seconds <= 0) {
        std::fprintf(stderr, "usage: bench_gateway SECONDS\n");
        return 2;
    }
    return plc::bench::run(seconds);
}
