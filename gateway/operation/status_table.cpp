#include "gateway/operation/status_table.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>

#include "values/duration_text.h"
#include "values/visible_text.h"

namespace plc::gateway {
namespace {

constexpr double kMillisecondsInSecond = 1e3;

/// "1m30s"
QString duration(qint64 milliseconds)
{
    return values::durationText(quint64(qMax<qint64>(0, milliseconds))).mid(2);
}

/// Of a second or more only whole seconds.
QString roughDuration(qint64 milliseconds)
{
    const qint64 second = qint64(kMillisecondsInSecond);
    return duration(milliseconds < second ? milliseconds : milliseconds / second * second);
}

QString secondsText(double seconds)
{
    return duration(qint64(seconds * kMillisecondsInSecond));
}

QString sinceText(qint64 since, qint64 now)
{
    if (since == 0)
        return QStringLiteral("since the start");
    const QString time = QDateTime::fromMSecsSinceEpoch(since, Qt::UTC)
                             .toString(QStringLiteral("yyyy-MM-dd "
                                                      "HH:mm:ss'Z'"));
    return QStringLiteral("since %1 (%2)").arg(time, roughDuration(now - since));
}

QString withProblem(const QString& text, const QString& problem)
{
    return problem.isEmpty() ? text : text + QLatin1String(": ") + values::visibleText(problem);
}

QString brokerLine(const BrokerStatistics& broker, qint64 now)
{
    const QString state =
        broker.isConnected ? QStringLiteral("connected") : QStringLiteral("not connected");
    const QString line =
        QStringLiteral("Broker %1 %2 %3; %4 messages, %5 connections, %6 rebirths")
            .arg(values::visibleText(broker.name), state, sinceText(broker.since, now))
            .arg(broker.messages)
            .arg(broker.connections)
            .arg(broker.rebirths);
    return withProblem(line, broker.problem);
}

QString storeLine(const StoreStatistics& store)
{
    const QString line =
        QStringLiteral("Store %1 changes wait, %2 were stored, %3 sent, %4 dropped in all")
            .arg(store.waiting)
            .arg(store.stored)
            .arg(store.sent)
            .arg(store.dropped);
    return withProblem(line, store.problem);
}

/// Empty while there is nothing to tell.
QString auditText(const AuditStatistics& audit)
{
    if (audit.waiting == 0 && audit.unanswered == 0 && audit.problem.isEmpty())
        return QString();
    const QString line = QStringLiteral("Audit %1 lines wait; %2 requests were refused unanswered")
                             .arg(audit.waiting)
                             .arg(audit.unanswered);
    return withProblem(line, audit.problem) + QLatin1Char('\n');
}

using Row = QStringList;

Row deviceRow(const DeviceStatistics& device, qint64 now)
{
    const QString none = QStringLiteral("-");
    const quint64 writes = device.writes.done + device.writes.refused + device.writes.unknown;
    return {values::visibleText(device.name),
            device.isUp ? QStringLiteral("up") : QStringLiteral("down"),
            device.since == 0 ? none : roughDuration(now - device.since),
            QString::number(device.good),
            QString::number(device.stale),
            QString::number(device.bad),
            device.good > 0 ? secondsText(device.oldestAge) : none,
            device.cycleTime > 0 ? secondsText(device.cycleTime) : none,
            QString::number(device.changesPublished),
            QString::number(device.changesStored),
            writes == 0 ? none
                        : QStringLiteral("%1/%2/%3")
                              .arg(device.writes.done)
                              .arg(device.writes.refused)
                              .arg(device.writes.unknown),
            values::visibleText(device.problem)};
}

const Row kTitles = {
    QStringLiteral("Device"), QStringLiteral("Link"),   QStringLiteral("For"),
    QStringLiteral("Good"),   QStringLiteral("Stale"),  QStringLiteral("Bad"),
    QStringLiteral("Oldest"), QStringLiteral("Cycle"),  QStringLiteral("Published"),
    QStringLiteral("Stored"), QStringLiteral("Writes"), QStringLiteral("Problem")};

QString tableText(const QVector<Row>& rows)
{
    QVector<int> widths(kTitles.size());
    for (const Row& row : rows) {
        for (int column = 0; column < int(row.size()); ++column)
            widths[column] = qMax(widths[column], int(row[column].size()));
    }
    QString text;
    for (const Row& row : rows) {
        QString line;
        for (int column = 0; column < int(row.size()); ++column)
            line += row[column].leftJustified(widths[column]) + QLatin1String("  ");
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
    }
    return text;
}

} // namespace

QString statusTable(const GatewayStatistics& statistics)
{
    QVector<Row> rows{kTitles};
    for (const DeviceStatistics& device : statistics.devices)
        rows.append(deviceRow(device, statistics.time));
    const QString head =
        QStringLiteral("%1/%2, plc-gateway %3, running %4")
            .arg(values::visibleText(statistics.group), values::visibleText(statistics.node),
                 values::visibleText(statistics.version),
                 sinceText(statistics.started, statistics.time));
    return head + QLatin1Char('\n') + brokerLine(statistics.broker, statistics.time) +
           QLatin1Char('\n') + storeLine(statistics.store) + QLatin1Char('\n') +
           auditText(statistics.audit) + QLatin1Char('\n') + tableText(rows) +
           QLatin1String("\nWrites: done/refused/unknown\n");
}

} // namespace plc::gateway
