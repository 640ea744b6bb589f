#include "cli/stats_report.h"

#include "cli/value_lines.h"
#include "host/transfers/result_text.h"

namespace plc::cli {
namespace {

constexpr int kNameWidth = 14;
constexpr int kCountWidth = 12;
constexpr double kNanosecondsPerMillisecond = 1e6;
constexpr int kLatencyDecimals = 3;
constexpr int kRateDecimals = 1;

struct Percentile {
    const char* name;
    double share;
};

constexpr Percentile kPercentiles[] = {{"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}};

double milliseconds(qint64 nanoseconds)
{
    return double(nanoseconds) / kNanosecondsPerMillisecond;
}

double perSecond(quint64 count, const StatsReport& report)
{
    return report.duration > 0 ? 1000.0 * double(count) / double(report.duration) : 0;
}

QString named(const char* name, const QString& text)
{
    return QString::fromLatin1(name).leftJustified(kNameWidth) + text;
}

QString counted(const char* name, quint64 count)
{
    return named(name, QString::number(count).rightJustified(kCountWidth));
}

QString countedWithRate(const char* name, quint64 count, const StatsReport& report)
{
    return counted(name, count) +
           QStringLiteral("%1 /s").arg(perSecond(count, report), kCountWidth, 'f', kRateDecimals);
}

QString timeText(qint64 nanoseconds)
{
    return QStringLiteral("%1 ms").arg(milliseconds(nanoseconds), 0, 'f', kLatencyDecimals);
}

QString roundTripLine(const host::LatencyHistogram& times)
{
    if (times.count() == 0)
        return named("round trip", QStringLiteral("  no reply yet"));
    QString text;
    for (const Percentile& percentile : kPercentiles) {
        text += QStringLiteral("  %1 %2").arg(QLatin1String(percentile.name),
                                              timeText(times.percentile(percentile.share)));
    }
    return named("round trip", text + QStringLiteral("  max ") + timeText(times.longest()));
}

QString firstValuesLine(quint64 roundTrips)
{
    if (roundTrips == 0)
        return named("first values", QStringLiteral("  none yet"));
    return counted("first values", roundTrips) +
           (roundTrips == 1 ? QStringLiteral(" round trip") : QStringLiteral(" round trips")) +
           QStringLiteral(" after the login, at most");
}

QString roundTripJson(const host::LatencyHistogram& times)
{
    JsonLine line;
    line.add("count", qint64(times.count()));
    for (const Percentile& percentile : kPercentiles) {
        line.add(percentile.name, milliseconds(times.percentile(percentile.share)),
                 kLatencyDecimals);
    }
    return line.add("max", milliseconds(times.longest()), kLatencyDecimals).text();
}

QString arrayJson(const QStringList& elements)
{
    return QLatin1Char('[') + elements.join(QLatin1Char(',')) + QLatin1Char(']');
}

QString failuresJson(const QMap<int, quint64>& failures)
{
    QStringList elements;
    for (auto failure = failures.constBegin(); failure != failures.constEnd(); ++failure) {
        JsonLine line;
        line.add("result", qint64(failure.key()));
        line.add("meaning", host::resultText(failure.key()));
        elements.append(line.add("count", qint64(failure.value())).text());
    }
    return arrayJson(elements);
}

QString refusalsJson(const QMap<int, quint64>& refusals)
{
    QStringList elements;
    for (auto refusal = refusals.constBegin(); refusal != refusals.constEnd(); ++refusal) {
        JsonLine line;
        line.add("status", qint64(refusal.key()));
        elements.append(line.add("count", qint64(refusal.value())).text());
    }
    return arrayJson(elements);
}

QString lossesJson(const QMap<QString, quint64>& reasons)
{
    QStringList elements;
    for (auto reason = reasons.constBegin(); reason != reasons.constEnd(); ++reason) {
        JsonLine line;
        line.add("reason", reason.key());
        elements.append(line.add("count", qint64(reason.value())).text());
    }
    return arrayJson(elements);
}

} // namespace

QStringList statsLines(const StatsReport& report)
{
    const host::LinkStatistics& link = report.link;
    QStringList lines = {
        named("time", QStringLiteral("%1 s").arg(double(report.duration) / 1000, kCountWidth, 'f',
                                                 kRateDecimals)),
        countedWithRate("requests", link.requests(), report),
        counted("  accepted", link.accepted()),
        counted("  refused", link.refused()),
        counted("  unanswered", link.unanswered()),
        counted("retries", link.retries()),
        counted("logins", link.logins()),
        counted("reconnects", link.reconnects()),
        countedWithRate("values", report.values, report),
        countedWithRate("bytes sent", report.bytesSent, report),
        countedWithRate("  received", report.bytesReceived, report),
        roundTripLine(link.roundTrips()),
        firstValuesLine(link.roundTripsToValues()),
    };
    const QMap<int, quint64>& refusals = link.refusals();
    for (auto refusal = refusals.constBegin(); refusal != refusals.constEnd(); ++refusal) {
        lines.append(counted("refused", refusal.value()) + QStringLiteral(" x reads with ") +
                     host::statusText(refusal.key()));
    }
    const QMap<int, quint64>& failures = link.failures();
    for (auto failure = failures.constBegin(); failure != failures.constEnd(); ++failure) {
        lines.append(counted("gave up", failure.value()) +
                     QStringLiteral(" x result %1: %2")
                         .arg(failure.key())
                         .arg(host::resultText(failure.key())));
    }
    const QMap<QString, quint64>& losses = link.lossReasons();
    for (auto loss = losses.constBegin(); loss != losses.constEnd(); ++loss)
        lines.append(counted("link lost", loss.value()) + QStringLiteral(" x ") + loss.key());
    return lines;
}

QString statsJson(const StatsReport& report)
{
    const host::LinkStatistics& link = report.link;
    JsonLine line;
    line.add("duration", report.duration);
    line.add("requests", qint64(link.requests()));
    line.add("accepted", qint64(link.accepted()));
    line.add("refused", qint64(link.refused()));
    line.add("unanswered", qint64(link.unanswered()));
    line.add("retries", qint64(link.retries()));
    line.add("logins", qint64(link.logins()));
    line.add("reconnects", qint64(link.reconnects()));
    line.add("values", qint64(report.values));
    line.add("valuesPerSecond", perSecond(report.values, report), kRateDecimals);
    line.add("bytesSent", qint64(report.bytesSent));
    line.add("bytesReceived", qint64(report.bytesReceived));
    line.addJson("roundTrip", roundTripJson(link.roundTrips()));
    line.add("roundTripsToValues", qint64(link.roundTripsToValues()));
    line.addJson("refusals", refusalsJson(link.refusals()));
    line.addJson("failures", failuresJson(link.failures()));
    line.addJson("linkLosses", lossesJson(link.lossReasons()));
    return line.text();
}

} // namespace plc::cli
