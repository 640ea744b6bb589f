#include "cli/line_view.h"

#include "cli/console.h"
#include "cli/time_text.h"
#include "cli/value_lines.h"
#include "host/points/value_codec.h"

namespace plc::cli {
namespace {

JsonLine event(const char* kind, const QString& time = wallClock())
{
    JsonLine line;
    line.add("time", time);
    line.add("event", QString::fromLatin1(kind));
    return line;
}

QString stateWord(host::LinkState state)
{
    switch (state) {
        case host::LinkState::Connecting:
            return QStringLiteral("connecting");
        case host::LinkState::Up:
            return QStringLiteral("up");
        case host::LinkState::Down:
            break;
    }
    return QStringLiteral("down");
}

QString staleText(const host::ValueTable& values, int row, qint64 now)
{
    if (values.isRefused(row))
        return QStringLiteral(" (refused by the PLC)");
    if (!values.wasRead(row))
        return QStringLiteral(" (stale, never read)");
    return QStringLiteral(" (stale, %1 s old)").arg(double(values.age(row, now)) / 1000, 0, 'f', 1);
}

} // namespace

QString LineView::eventLine(const QString& text, const JsonLine& json, const QString& time) const
{
    return m_json ? json.text() : time + QLatin1Char(' ') + text;
}

void LineView::printEvent(const QString& text, const JsonLine& json) const
{
    print(eventLine(text, json, wallClock()));
}

void LineView::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    JsonLine json = event("link");
    json.add("state", stateWord(state));
    json.add("peer", m_peer);
    if (state == host::LinkState::Down)
        json.add("reason", reason);
    if (retryDelay >= 0)
        json.add("retry", qint64(retryDelay));
    printEvent(linkText(state, m_peer, reason, retryDelay), json);
}

void LineView::writeSettled(const Assignment& assignment, const host::TransferOutcome& outcome)
{
    JsonLine json = event("write");
    addWrite(assignment, outcome, &json);
    printOutcome(
        eventLine(QStringLiteral("write ") + writeLine(assignment, outcome), json, wallClock()));
}

void LineView::valueRefused(const host::DataPoint& point, int status)
{
    JsonLine json = event("refused");
    json.addPoint(point);
    json.add("area", qint64(point.area));
    json.add("address", qint64(point.address));
    json.add("status", qint64(status));
    json.add("text", refusedValueText(point, status));
    printEvent(refusedValueText(point, status), json);
}

void LineView::message(const QString& text)
{
    JsonLine json = event("message");
    json.add("text", text);
    printEvent(text, json);
}

void LineView::valuesRead(const host::Runtime& runtime, qint64 now)
{
    if (m_everyChange)
        refresh(runtime, now);
}

void LineView::refresh(const host::Runtime& runtime, qint64 now)
{
    const host::ValueTable& values = runtime.values();
    // Printing may take its time where nobody reads; the ages are those of this moment.
    const QString time = wallClock();
    for (int row : m_changes.take(values, now))
        printValue(values, row, now, time);
}

void LineView::printValue(const host::ValueTable& values, int row, qint64 now,
                          const QString& time) const
{
    const host::DataPoint& point = values.point(row);
    const bool wasRead = values.wasRead(row);
    const bool isStale = values.isStale(row, now);
    const QVector<values::Value> elements = host::decodeValues(point, values.bytes(row));
    JsonLine json = event("value", time);
    json.addPoint(point);
    json.addJson("value", wasRead ? host::pointJson(point, elements) : QStringLiteral("null"));
    json.addJson("age", wasRead ? QString::number(values.age(row, now)) : QStringLiteral("null"));
    json.addFlag("stale", isStale);
    if (values.isRefused(row))
        json.addFlag("refused", true);
    if (values.isPieced(row))
        json.addFlag("pieced", true);
    json.add("rate", values.readsPerSecond(row, now), 1);
    json.add("reads", qint64(values.reads(row)));
    json.add("changes", qint64(values.changes(row)));
    const QString text =
        valueLine(point, wasRead ? host::pointText(point, elements) : QStringLiteral("?"));
    print(eventLine(isStale ? text + staleText(values, row, now) : text, json, time));
}

void LineView::end(const host::Runtime& runtime, qint64 now)
{
    const host::TrafficCounters& counters = runtime.counters();
    JsonLine json = event("end");
    json.add("requests", qint64(counters.requests));
    json.add("accepted", qint64(counters.accepted));
    json.add("refused", qint64(counters.refused));
    json.add("linkLosses", qint64(counters.linkLosses));
    json.add("duration", now);
    printEvent(summaryText(counters, now), json);
}

} // namespace plc::cli
