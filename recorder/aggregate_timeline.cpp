#include "recorder/aggregate_timeline.h"

#include <algorithm>

namespace plc::recorder {

AggregateTimeline::AggregateTimeline(qint64 from, qint64 to, qint64 step, qint64 mostKept)
    : m_from(from),
      m_to(to),
      m_step(step),
      m_mostKept(std::max<qint64>(1, mostKept)),
      m_sum(from, to, step)
{
}

void AggregateTimeline::add(const NumberSample& sample)
{
    ++m_count;
    if (isReplaced(sample))
        return;
    if (sample.time < m_summed)
        return cutSummed(sample.time);
    while (!m_latest.isEmpty() && m_latest.last().time > sample.time)
        m_latest.removeLast();
    if (sample.time < m_from)
        m_sum.add(sample);
    else if (sample.time < m_to)
        m_latest.append(sample);
    if (m_latest.size() > m_mostKept)
        sumOldest();
}

bool AggregateTimeline::isFinished()
{
    if (!m_isWhole) {
        begin();
        return false;
    }
    for (const NumberSample& sample : m_latest)
        m_sum.add(sample);
    m_aggregates = m_sum.finish();
    return true;
}

void AggregateTimeline::begin()
{
    m_nextCut = 0;
    m_count = 0;
    m_latest.clear();
    m_summed = std::numeric_limits<qint64>::min();
    m_isWhole = true;
    m_sum = AggregateSum(m_from, m_to, m_step);
}

/// By a later one that is known from before. The next one has the least time of all to come.
bool AggregateTimeline::isReplaced(const NumberSample& sample)
{
    while (m_nextCut < m_cuts.size() && m_cuts[m_nextCut].count <= m_count)
        ++m_nextCut;
    return m_nextCut < m_cuts.size() && sample.time > m_cuts[m_nextCut].time;
}

/// Goes on so that more of these are found; what is summed is of no use.
void AggregateTimeline::cutSummed(qint64 time)
{
    while (m_nextCut > 0 && m_cuts[m_nextCut - 1].time >= time)
        m_cuts.remove(--m_nextCut);
    m_cuts.insert(m_nextCut++, {m_count, time});
    m_latest.clear();
    m_summed = time;
    m_isWhole = false;
}

void AggregateTimeline::sumOldest()
{
    const int count = int(m_latest.size() + 1) / 2;
    for (int i = 0; i < count; ++i)
        m_sum.add(m_latest[i]);
    m_summed = m_latest[count - 1].time;
    m_latest.remove(0, count);
}

} // namespace plc::recorder
