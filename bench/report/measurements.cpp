#include "measurements.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>
#include <cstdlib>

namespace plc {
namespace bench {

namespace {

double nanosecondsIn(const QString& unit)
{
    if (unit == QLatin1String("ms"))
        return 1e6;
    return unit == QLatin1String("us") ? 1e3 : 1;
}

double timeIn(const QJsonObject& entry)
{
    return entry.value(QLatin1String("cpu_time")).toDouble() *
           nanosecondsIn(entry.value(QLatin1String("time_unit")).toString());
}

void takeMedians(const QJsonObject& entry, Measurement& measurement)
{
    measurement.time = timeIn(entry);
    measurement.variables = entry.value(QLatin1String("variables")).toDouble(1);
    measurement.allocations = entry.value(QLatin1String("allocations")).toDouble();
    measurement.bytes = entry.value(QLatin1String("bytes")).toDouble();
    measurement.held = entry.value(QLatin1String("held")).toDouble();
}

} // namespace

void giveUp(const QString& message)
{
    std::fprintf(stderr, "bench_report: %s\n", qPrintable(message));
    std::exit(2);
}

QJsonObject readObject(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        giveUp(path + QLatin1String(": ") + file.errorString());
    QJsonParseError error;
    // Spreads of what is always 0 stand in the file as NaN, which is no JSON.
    const QByteArray text = file.readAll().replace(": NaN", ": null").replace(": -NaN", ": null");
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject())
        giveUp(path + QLatin1String(" holds no JSON object: ") + error.errorString());
    return document.object();
}

Measurements Measurements::fromFile(const QString& path)
{
    const QJsonObject run = readObject(path);
    Measurements measurements;
    measurements.m_qtVersion = run.value(QLatin1String("context"))
                                   .toObject()
                                   .value(QLatin1String("qt_version"))
                                   .toString();
    const QJsonArray benchmarks = run.value(QLatin1String("benchmarks")).toArray();
    for (const QJsonValue& value : benchmarks) {
        const QJsonObject entry = value.toObject();
        const QString name = entry.value(QLatin1String("run_name")).toString();
        if (entry.value(QLatin1String("error_occurred")).toBool())
            giveUp(name + QLatin1String(": ") +
                   entry.value(QLatin1String("error_message")).toString());
        const QString aggregate = entry.value(QLatin1String("aggregate_name")).toString();
        if (aggregate == QLatin1String("least"))
            measurements.m_byName[name].leastTime = timeIn(entry);
        if (aggregate != QLatin1String("median"))
            continue;
        takeMedians(entry, measurements.m_byName[name]);
        const QString work = name.section(QLatin1Char('/'), 0, -2);
        if (!measurements.m_works.contains(work))
            measurements.m_works.append(work);
    }
    if (measurements.m_works.isEmpty())
        giveUp(path + QLatin1String(" holds no medians; run with --benchmark_repetitions"));
    return measurements;
}

QString Measurements::qtMajor() const
{
    return QLatin1String("qt") + m_qtVersion.section(QLatin1Char('.'), 0, 0);
}

} // namespace bench
} // namespace plc
