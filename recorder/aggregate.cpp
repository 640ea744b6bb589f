#include "recorder/aggregate.h"

#include <algorithm>
#include <limits>

namespace plc::recorder {
namespace {

/// One step in the making.
class StepSum {
public:
    /// The number held for so many ms, or none and was recorded all the same.
    void add(double number, qint64 duration)
    {
        m_minimum = std::min(m_minimum, number);
        m_maximum = std::max(m_maximum, number);
        // With the range of a double the sum of large numbers would have no room.
        m_sum += static_cast<long double>(number) * static_cast<long double>(duration);
        m_known += duration;
    }

    Aggregate aggregate(qint64 begin, qint64 duration) const
    {
        Aggregate result;
        result.begin = begin;
        if (m_known == 0)
            return result;
        result.mean = double(m_sum / static_cast<long double>(m_known));
        result.minimum = m_minimum;
        result.maximum = m_maximum;
        result.coverage = double(m_known) / double(duration);
        return result;
    }

private:
    double m_minimum = std::numeric_limits<double>::infinity();
    double m_maximum = -std::numeric_limits<double>::infinity();
    long double m_sum = 0;
    qint64 m_known = 0;
};

} // namespace

QVector<Aggregate> aggregatesOf(const NumberSample& before, const QVector<NumberSample>& samples,
                                qint64 from, qint64 to, qint64 step)
{
    QVector<Aggregate> aggregates;
    NumberSample held = before;
    auto next = samples.constBegin();
    for (qint64 begin = from; begin < to;) {
        const qint64 end = to - begin > step ? begin + step : to;
        StepSum sum;
        qint64 since = begin;
        const auto add = [&](qint64 until) {
            // What the step before held until its end is no value of this one.
            const bool counts = until > since || held.time >= begin;
            if (held.isKnown && counts)
                sum.add(held.number, until - since);
            since = until;
        };
        for (; next != samples.constEnd() && next->time < end; ++next) {
            add(next->time);
            held = *next;
        }
        add(end);
        aggregates.append(sum.aggregate(begin, end - begin));
        begin = end;
    }
    return aggregates;
}

} // namespace plc::recorder
