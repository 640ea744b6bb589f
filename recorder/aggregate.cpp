#include "recorder/aggregate.h"

#include <algorithm>
#include <utility>

namespace plc::recorder {
namespace {

qint64 endOf(qint64 begin, qint64 to, qint64 step)
{
    return to - begin > step ? begin + step : to;
}

} // namespace

void StepSum::add(const NumberSample& sample, qint64 duration)
{
    m_durations[std::size_t(sample.knowledge)] += duration;
    if (sample.knowledge != Knowledge::Number)
        return;
    m_minimum = std::min(m_minimum, sample.number());
    m_maximum = std::max(m_maximum, sample.number());
    // With the range of a double the sum of large numbers would have no room.
    m_sum += static_cast<long double>(sample.nearest) * static_cast<long double>(duration);
}

Aggregate StepSum::aggregate(qint64 begin, qint64 duration) const
{
    Aggregate result;
    result.begin = begin;
    const auto longest = std::max_element(m_durations.begin() + 1, m_durations.end());
    if (*longest > 0)
        result.rest = Knowledge(longest - m_durations.begin());
    const qint64 known = m_durations[std::size_t(Knowledge::Number)];
    if (known == 0)
        return result;
    result.mean = double(m_sum / static_cast<long double>(known));
    result.minimum = m_minimum;
    result.maximum = m_maximum;
    result.coverage = double(known) / double(duration);
    return result;
}

AggregateSum::AggregateSum(qint64 from, qint64 to, qint64 step)
    : m_to(to), m_step(step), m_begin(from), m_end(endOf(from, to, step)), m_since(from)
{
}

void AggregateSum::add(const NumberSample& sample)
{
    if (sample.time >= m_to)
        return;
    if (sample.time >= m_begin) {
        while (sample.time >= m_end)
            endStep();
        hold(sample.time);
    }
    m_held = sample;
}

QVector<Aggregate> AggregateSum::finish()
{
    while (m_begin < m_to)
        endStep();
    return std::exchange(m_aggregates, {});
}

void AggregateSum::hold(qint64 until)
{
    // What the step before held until its end is no value of this one.
    const bool counts = until > m_since || m_held.time >= m_begin;
    if (counts)
        m_sum.add(m_held, until - m_since);
    m_since = until;
}

void AggregateSum::endStep()
{
    hold(m_end);
    m_aggregates.append(std::exchange(m_sum, StepSum()).aggregate(m_begin, m_end - m_begin));
    m_begin = m_end;
    m_end = endOf(m_begin, m_to, m_step);
}

} // namespace plc::recorder
