#include "host/points/freshness.h"

namespace plc::host {

bool Freshness::cover(qint64 start, qint64 end, qint64 now)
{
    const quint32 size = m_runs.last().end;
    const quint32 from = quint32(qBound<qint64>(0, start, size));
    const quint32 to = quint32(qBound<qint64>(from, end, size));
    if (from == to)
        return false;
    // Nearly always all of it; nothing is allocated then.
    if (to - from == size) {
        m_runs.resize(1);
        m_runs.first() = {0, size, now};
        return true;
    }
    QVector<Run> runs;
    for (const Run& run : m_runs) {
        append(&runs, run.start, qMin(run.end, from), run.time);
        append(&runs, qMax(run.start, from), qMin(run.end, to), now);
        append(&runs, qMax(run.start, to), run.end, run.time);
    }
    m_runs.swap(runs);
    return true;
}

qint64 Freshness::oldest() const
{
    qint64 time = m_runs.first().time;
    for (const Run& run : m_runs)
        time = qMin(time, run.time);
    return time;
}

void Freshness::append(QVector<Run>* runs, quint32 start, quint32 end, qint64 time)
{
    if (start >= end)
        return;
    if (!runs->isEmpty() && runs->last().time == time)
        runs->last().end = end;
    else
        runs->append({start, end, time});
}

} // namespace plc::host
