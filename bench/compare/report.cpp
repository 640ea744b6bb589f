#include "report.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cstdio>

namespace plc::bench {
namespace {

constexpr double kMicrosecondsInSecond = 1e6;

/// What is shown of a measurement: values of one pass or of one value.
struct Quantity {
    const char* key; ///< In the JSON.
    double (*of)(const Measurement&);
};

constexpr Quantity kQuantities[] = {
    {"valuesPerSecond", valuesPerSecond},
    {"requestsPerPass", [](const Measurement& one) { return one.requests / one.passes; }},
    {"bytesPerValue",
     [](const Measurement& one) {
         return double(one.traffic.bytesSent + one.traffic.bytesReceived) / one.values;
     }},
    {"segmentsPerPass",
     [](const Measurement& one) { return double(one.traffic.segments) / one.passes; }},
    {"processorMicrosecondsPerValue",
     [](const Measurement& one) { return processorTimePerValue(one) * kMicrosecondsInSecond; }},
    {"medianLatency", [](const Measurement& one) { return one.medianLatency; }},
    {"latency99", [](const Measurement& one) { return one.latency99; }}};

/// Digits enough for three that count.
QString shown(double number)
{
    const int decimals = number >= 100 ? 0 : number >= 10 ? 1 : number >= 1 ? 2 : 3;
    return QString::number(number, 'f', decimals);
}

void printRow(const std::vector<Result>& results, const Result& result)
{
    const double ratio = ratioTo(Peer::Libmodbus, results, result, valuesPerSecond);
    std::printf("  %-26s", qPrintable(nameOf(result.peer)));
    for (const Quantity& quantity : kQuantities)
        std::printf(" %10s", qPrintable(shown(medianOf(result, quantity.of))));
    std::printf(" %10s\n", ratio > 0 ? qPrintable(shown(ratio)) : "-");
}

QJsonObject roundJson(const Measurement& round)
{
    QJsonObject json;
    for (const Quantity& quantity : kQuantities)
        json.insert(QLatin1String(quantity.key), quantity.of(round));
    return json;
}

QJsonObject resultJson(const std::vector<Result>& results, const Result& result)
{
    QJsonObject json{{QStringLiteral("work"), QString(QLatin1Char(letterOf(result.work)))},
                     {QStringLiteral("title"), titleOf(result.work)},
                     {QStringLiteral("addedRoundTrip"), result.delay},
                     {QStringLiteral("peer"), nameOf(result.peer)},
                     {QStringLiteral("timesLibmodbus"),
                      ratioTo(Peer::Libmodbus, results, result, valuesPerSecond)}};
    for (const Quantity& quantity : kQuantities)
        json.insert(QLatin1String(quantity.key), medianOf(result, quantity.of));
    QJsonArray rounds;
    for (const Measurement& round : result.rounds)
        rounds.append(roundJson(round));
    json.insert(QStringLiteral("rounds"), rounds);
    return json;
}

} // namespace

void printTable(const std::vector<Result>& results)
{
    std::printf("Qt %s, medians of the rounds\n", qVersion());
    const Result* last = nullptr;
    for (const Result& result : results) {
        if (!last || last->work != result.work || last->delay != result.delay) {
            std::printf("\n(%c) %s, %d ms added round-trip time\n", letterOf(result.work),
                        qPrintable(titleOf(result.work)), result.delay);
            std::printf("  %-26s %10s %10s %10s %10s %10s %10s %10s %10s\n", "", "values a",
                        "requests", "bytes a", "segments", "CPU us a", "p50", "p99", "times");
            std::printf("  %-26s %10s %10s %10s %10s %10s %10s %10s %10s\n", "", "second", "a pass",
                        "value", "a pass", "value", "ms", "ms", "libmodbus");
        }
        printRow(results, result);
        last = &result;
    }
    std::printf(
        "\np50, p99: from the moment in which all values of a pass are asked for to the one in\n"
        "which half of them, or 99 of 100, are there. CPU: of the client's process.\n\n");
}

void writeJson(const std::vector<Result>& results, const QString& path)
{
    QJsonArray all;
    for (const Result& result : results)
        all.append(resultJson(results, result));
    const QJsonObject json{{QStringLiteral("qt"), QString::fromLatin1(qVersion())},
                           {QStringLiteral("results"), all}};
    QFile file(path);
    if (!file.open(QFile::WriteOnly) || file.write(QJsonDocument(json).toJson()) < 0)
        giveUp(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

} // namespace plc::bench
