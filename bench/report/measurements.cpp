#include "measurements.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>
#include <cstdlib>

namespace plc::bench {

namespace {

Measurement measurementIn(const QJsonObject& entry)
{
    Measurement measurement;
    measurement.time = entry.value(QLatin1String("cpu_time")).toDouble();
    measurement.variables = entry.value(QLatin1String("variables")).toDouble(1);
    measurement.allocations = entry.value(QLatin1String("allocations")).toDouble();
    measurement.bytes = entry.value(QLatin1String("bytes")).toDouble();
    measurement.held = entry.value(QLatin1String("held")).toDouble();
    return measurement;
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
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isObject())
        giveUp(path + QLatin1String(" holds no JSON object: ") + error.errorString());
    return document.object();
}

Measurements::Measurements(const QStringList& paths)
{
    for (const QString& path : paths)
        addRound(path);
}

void Measurements::addRound(const QString& path)
{
    const QJsonObject run = readObject(path);
    m_qtVersion = run.value(QLatin1String("context"))
                      .toObject()
                      .value(QLatin1String("qt_version"))
                      .toString();
    Round round;
    const QJsonArray benchmarks = run.value(QLatin1String("benchmarks")).toArray();
    for (const QJsonValue& value : benchmarks) {
        const QJsonObject entry = value.toObject();
        const QString name = entry.value(QLatin1String("name")).toString();
        if (entry.value(QLatin1String("error_occurred")).toBool())
            giveUp(name + QLatin1String(": ") +
                   entry.value(QLatin1String("error_message")).toString());
        round.insert(name, measurementIn(entry));
        const QString work = name.section(QLatin1Char('/'), 0, -2);
        if (!m_works.contains(work))
            m_works.append(work);
    }
    if (round.isEmpty())
        giveUp(path + QLatin1String(" holds no benchmarks"));
    if (!m_rounds.empty() && round.keys() != m_rounds.front().keys())
        giveUp(path + QLatin1String(" holds other benchmarks than the first round"));
    m_rounds.push_back(round);
}

QString Measurements::qtMajor() const
{
    return QLatin1String("qt") + m_qtVersion.section(QLatin1Char('.'), 0, 0);
}

double Measurements::timeRatio(const QString& name, const QString& other) const
{
    if (!contains(name) || !contains(other))
        return 0;
    return median(
        [&](const Round& round) { return round.value(name).time / round.value(other).time; });
}

} // namespace plc::bench
