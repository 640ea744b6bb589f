#include "stored_ratios.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <cmath>
#include <cstdio>

namespace plc::bench {

namespace {

/// Part of an allocation a call that growing containers may add or spare.
constexpr double kAllocationSlack = 0.01;

double rounded(double number)
{
    return std::round(number * 1000) / 1000;
}

QString workName(const QString& work, const char* who)
{
    return work + QLatin1Char('/') + QLatin1String(who);
}

/// The driver's time as a multiple of the floor's, or of the baseline's; 0 without either.
double ratioOf(const Measurements& measurements, const QString& work)
{
    const QString driver = workName(work, "driver");
    const double toFloor = measurements.timeRatio(driver, workName(work, "floor"));
    return toFloor > 0 ? toFloor : measurements.timeRatio(driver, workName(work, "baseline"));
}

double allocationsOf(const Measurements& measurements, const QString& work)
{
    return measurements.median(
        [&](const Round& round) { return round.value(workName(work, "driver")).allocations; });
}

bool isWorse(const char* what, const QString& work, double now, double stored, double limit)
{
    if (now <= limit)
        return false;
    std::printf("WORSE       %-54s %s %.3f, stored %.3f, at most %.3f\n", qPrintable(work), what,
                now, stored, limit);
    return true;
}

} // namespace

bool compareWithStored(const Measurements& measurements, const QString& path)
{
    const QJsonObject file = readObject(path);
    const double tolerance = file.value(QLatin1String("tolerance")).toDouble();
    const QJsonObject stored = file.value(measurements.qtMajor()).toObject();
    int compared = 0;
    int worse = 0;
    for (const QString& work : measurements.works()) {
        if (!stored.contains(work))
            continue;
        ++compared;
        const QJsonObject before = stored.value(work).toObject();
        const double ratio = before.value(QLatin1String("ratio")).toDouble();
        const double allocations = before.value(QLatin1String("allocations")).toDouble();
        worse += isWorse("time ratio", work, ratioOf(measurements, work), ratio, ratio * tolerance);
        worse += isWorse("allocations", work, allocationsOf(measurements, work), allocations,
                         allocations * (1 + kAllocationSlack) + kAllocationSlack);
    }
    if (compared == 0)
        giveUp(path + QLatin1String(" holds no work of this run; store its ratios first"));
    std::printf("%d works compared with the stored ratios (tolerance %g times): %d worse\n\n",
                compared, tolerance, worse);
    return worse == 0;
}

void storeRatios(const Measurements& measurements, const QString& path)
{
    QJsonObject file = readObject(path);
    QJsonObject ratios;
    for (const QString& work : measurements.works()) {
        const double ratio = ratioOf(measurements, work);
        if (ratio <= 0 || !measurements.contains(workName(work, "driver")))
            continue;
        QJsonObject stored;
        stored.insert(QLatin1String("ratio"), rounded(ratio));
        stored.insert(QLatin1String("allocations"), rounded(allocationsOf(measurements, work)));
        ratios.insert(work, stored);
    }
    file.insert(measurements.qtMajor(), ratios);
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(file).toJson()) < 0)
        giveUp(path + QLatin1String(": ") + out.errorString());
    std::printf("%d ratios stored in %s\n", int(ratios.size()), qPrintable(path));
}

} // namespace plc::bench
