#include "requirements.h"

#include <QtCore/QJsonArray>

#include <cstdio>

namespace plc::bench {

namespace {

double quantityOf(const Measurement& measurement, const QString& quantity)
{
    if (quantity == QLatin1String("time"))
        return measurement.time;
    if (quantity == QLatin1String("allocations"))
        return measurement.allocations;
    if (quantity == QLatin1String("held"))
        return measurement.held;
    if (quantity == QLatin1String("variables"))
        return measurement.variables;
    giveUp(quantity + QLatin1String(" is no quantity; time, allocations, held or variables is"));
}

double sumOf(const Round& round, const QJsonObject& weights, const QString& quantity)
{
    double sum = 0;
    for (auto i = weights.constBegin(); i != weights.constEnd(); ++i) {
        if (!round.contains(i.key()))
            giveUp(QLatin1String("a requirement needs ") + i.key() +
                   QLatin1String(", which the run does not hold; run without a filter"));
        sum += i.value().toDouble() * quantityOf(round.value(i.key()), quantity);
    }
    return sum;
}

/// `of`, divided by `per` where there is one.
double ratioIn(const Round& round, const QJsonObject& terms, const QString& quantity)
{
    const double value = sumOf(round, terms.value(QLatin1String("of")).toObject(), quantity);
    if (!terms.contains(QLatin1String("per")))
        return value;
    return value / sumOf(round, terms.value(QLatin1String("per")).toObject(),
                         terms.value(QLatin1String("perQuantity")).toString(quantity));
}

/// The ratio of the requirement, as a multiple of the one that it stands against where there is
/// one.
double valueIn(const Round& round, const QJsonObject& requirement)
{
    const QString quantity = requirement.value(QLatin1String("quantity")).toString();
    const double value = ratioIn(round, requirement, quantity);
    if (!requirement.contains(QLatin1String("against")))
        return value;
    const QJsonObject against = requirement.value(QLatin1String("against")).toObject();
    return value / ratioIn(round, against, quantity);
}

bool check(const Measurements& measurements, const QJsonObject& requirement)
{
    const double measured =
        measurements.median([&](const Round& round) { return valueIn(round, requirement); });
    const bool most = requirement.contains(QLatin1String("atMost"));
    const double limit =
        requirement.value(most ? QLatin1String("atMost") : QLatin1String("atLeast")).toDouble();
    const bool reached = most ? measured <= limit : measured >= limit;
    std::printf("%-11s %-78s %9.2f  (%s %g)\n", reached ? "reached" : "NOT REACHED",
                qPrintable(requirement.value(QLatin1String("work")).toString()), measured,
                most ? "at most" : "at least", limit);
    return reached;
}

} // namespace

bool checkRequirements(const Measurements& measurements, const QString& path)
{
    bool reached = true;
    const QJsonArray requirements = readObject(path).value(QLatin1String("requirements")).toArray();
    std::printf("What must hold, with Qt %s:\n", qPrintable(measurements.qtVersion()));
    for (const QJsonValue& requirement : requirements)
        reached = check(measurements, requirement.toObject()) && reached;
    std::printf("\n");
    return reached;
}

} // namespace plc::bench
