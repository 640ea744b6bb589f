// A panel under load: 20 browsers and 200 event streams on 10,000 values that change once a second.
// The browsers are Chromium; where there is none, streams of the values that they would show.
// Prints a line for each figure; ends with 1 when one is missed.

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "bench/panel/browsers.h"
#include "bench/panel/event_reader.h"
#include "bench/panel/panel_load.h"
#include "bench/support/measured_loop.h"
#include "bench/support/process_figures.h"

namespace plc::bench {
namespace {

constexpr int kValues = 10000;
constexpr int kStreams = 200;
constexpr int kBrowsers = 20;
constexpr int kValuesOfBrowser = 100;
constexpr int kSlowReaders = 5;
constexpr int kLongestWait = 120000; // ms
constexpr int kSettleTime = 10000;   // ms
// What the panel may take.
constexpr double kMostProcessor = 25.0;     // % of a core
constexpr double kMostMemory = 60e6 / 1024; // KiB
constexpr double kMostRequests = 1.02;      // of those with one stream

using Readers = std::vector<std::unique_ptr<EventReader>>;

/// What was seen for some seconds.
struct Figures {
    double requests = 0.0;  ///< Of the PLC, in a second.
    double processor = 0.0; ///< % of a core.
    double memory = 0.0;    ///< KiB, at most: the recorder takes more now and then.
    double bytes = 0.0;     ///< To all clients, in a second.
    double rows = 0.0;      ///< Of the stream that is looked at, in a second.
    double age = 0.0;       ///< ms, of 99 % of its events.
};

double percentile(std::vector<int> ages, double part)
{
    if (ages.empty())
        return 0.0;
    std::sort(ages.begin(), ages.end());
    return ages[std::size_t(part * double(ages.size() - 1))];
}

/// The first of the readers is the one that is looked at.
Figures measure(PanelLoad* load, const Readers& readers, int seconds)
{
    for (const std::unique_ptr<EventReader>& reader : readers)
        reader->forget();
    const qint64 requests = load->requests();
    const double processor = processorMs(load->panel());
    QElapsedTimer clock;
    clock.start();
    Figures figures;
    for (int i = 0; i < seconds; ++i) {
        runFor(1000);
        figures.memory = std::max(figures.memory, privateKib(load->panel()));
    }
    const double passed = double(clock.elapsed()) / 1000;
    figures.requests = double(load->requests() - requests) / passed;
    figures.processor = (processorMs(load->panel()) - processor) / passed / 10;
    for (const std::unique_ptr<EventReader>& reader : readers)
        figures.bytes += double(reader->bytes()) / passed;
    figures.rows = double(readers.front()->rows()) / passed;
    figures.age = percentile(readers.front()->ages(), 0.99);
    return figures;
}

void show(const char* title, const Figures& figures)
{
    std::printf(
        "%s: %.2f requests/s to the PLC, %.1f %% of a core, %.1f MiB, %.2f MB/s to clients, "
        "%.0f values/s to each of the streams, 99 %% of them within %.0f ms\n",
        title, figures.requests, figures.processor, figures.memory / 1024, figures.bytes / 1e6,
        figures.rows, figures.age);
    std::fflush(stdout);
}

int ended(const Readers& readers)
{
    return int(std::count_if(readers.begin(), readers.end(),
                             [](const auto& reader) { return reader->hasEnded(); }));
}

/// Clients that read nothing: whether each is cut off, and what the panel takes meanwhile.
bool trySlowReaders(PanelLoad* load, const QByteArray& subscription, const Readers& readers)
{
    const double before = privateKib(load->panel());
    Readers slow;
    for (int i = 0; i < kSlowReaders; ++i)
        slow.push_back(std::make_unique<EventReader>(load->port(), subscription,
                                                     EventReader::Manner{false, false}));
    // What the system keeps on the way is some seconds' worth.
    runFor(60000);
    const double memory = privateKib(load->panel()) - before;
    for (const std::unique_ptr<EventReader>& reader : slow) {
        for (int i = 0; i < 200 && !reader->hasEnded(); ++i) {
            reader->catchUp();
            runFor(5);
        }
    }
    bool isMet =
        printFigure("slow readers that were not cut off", kSlowReaders - ended(slow), 0, "");
    isMet = printFigure("other streams that ended meanwhile", ended(readers), 0, "") && isMet;
    std::printf("memory with %d readers that read nothing for a minute: %+.1f MiB\n", kSlowReaders,
                memory / 1024);
    return isMet;
}

void openBrowsers(const PanelLoad& load, Browsers* browsers, Readers* readers)
{
    for (int i = 0; i < kBrowsers; ++i) {
        const int first = 1 + i * kValuesOfBrowser;
        if (!Browsers::program().isEmpty())
            browsers->open(load.page(first, kValuesOfBrowser));
        else
            readers->push_back(
                std::make_unique<EventReader>(load.port(), load.subscribe(first, kValuesOfBrowser),
                                              EventReader::Manner{true, false}));
        // One after the other: their start takes more of the machine than all that follows.
        runUntil(
            "a browser follows its values", [&] { return load.streams() > kStreams + i; },
            kLongestWait);
    }
}

int run(int seconds)
{
    const QString browser = Browsers::program();
    std::printf(
        "%d values that change every second; %d streams of all, %d %s with %d values each; %d s\n",
        kValues, kStreams, kBrowsers,
        browser.isEmpty() ? "more streams" : qPrintable("browsers (" + browser + ')'),
        kValuesOfBrowser, seconds);
    std::fflush(stdout);
    PanelLoad load(kValues);
    load.start();
    const QByteArray all = load.subscribe(1, kValues);
    Readers readers;
    readers.push_back(
        std::make_unique<EventReader>(load.port(), all, EventReader::Manner{true, true}));
    runUntil(
        "values come", [&] { return readers.front()->rows() > 2 * kValues; }, kLongestWait);
    runFor(kSettleTime);
    const Figures one = measure(&load, readers, seconds);
    show("one stream", one);

    for (int i = 1; i < kStreams; ++i)
        readers.push_back(
            std::make_unique<EventReader>(load.port(), all, EventReader::Manner{true, false}));
    Browsers browsers;
    openBrowsers(load, &browsers, &readers);
    runFor(kSettleTime);
    const Figures many = measure(&load, readers, seconds);
    show("all of them", many);
    bool isMet = printFigure("requests to the PLC, as much as with one stream",
                             many.requests / one.requests, kMostRequests, "times");
    isMet = printFigure("processor time", many.processor, kMostProcessor, "% of a core") && isMet;
    isMet = printFigure("private memory", many.memory, kMostMemory, "KiB") && isMet;
    isMet = printFigure("values that are missing in a second",
                        std::max(0.0, 0.99 * kValues - many.rows), 0.0, "") &&
            isMet;
    isMet = printFigure("streams that were cut off", ended(readers), 0.0, "") && isMet;
    isMet =
        printFigure("streams that are missing", kStreams + kBrowsers - load.streams(), 0.0, "") &&
        isMet;
    isMet = trySlowReaders(&load, all, readers) && isMet;
    return isMet ? 0 : 1;
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    if (seconds <= 0) {
        std::fprintf(stderr, "usage: bench_panel SECONDS\n");
        return 2;
    }
    return plc::bench::run(seconds);
}
