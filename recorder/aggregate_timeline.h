#ifndef PLC_RECORDER_AGGREGATE_TIMELINE_H
#define PLC_RECORDER_AGGREGATE_TIMELINE_H

#include <QtCore/QVector>

#include <limits>

#include "recorder/aggregate.h"

namespace plc::recorder {

/// Aggregates of samples in the order in which they were recorded, of which few are in memory: all
/// but the latest are summed at once. One that was recorded later replaces what was recorded for
/// times from its own on. Where that was summed already it is noted, and what counts is left out
/// when the samples are given again:
///
///     while (!timeline.isFinished())
///         for (sample : samples)
///             timeline.add(sample);
class AggregateTimeline {
public:
    /// Keeps `mostKept` samples at most, one at least.
    AggregateTimeline(qint64 from, qint64 to, qint64 step, qint64 mostKept);

    void add(const NumberSample& sample);
    /// To be asked when all samples were given. False: they have to be given again.
    bool isFinished();
    const QVector<Aggregate>& aggregates() const { return m_aggregates; }

private:
    /// A sample that replaced others: those given before it with a later time count for nothing.
    struct Cut {
        qint64 count = 0; ///< How many samples were given with it.
        qint64 time = 0;
    };

    void begin();
    bool isReplaced(const NumberSample& sample);
    void cutSummed(qint64 time);
    void sumOldest();

    const qint64 m_from;
    const qint64 m_to;
    const qint64 m_step;
    const qint64 m_mostKept;
    QVector<Cut> m_cuts; ///< Ascending in both.
    int m_nextCut = 0;
    qint64 m_count = 0;
    QVector<NumberSample> m_latest;
    qint64 m_summed = std::numeric_limits<qint64>::min(); ///< Time of the last that was summed.
    bool m_isWhole = true;
    AggregateSum m_sum;
    QVector<Aggregate> m_aggregates;
};

} // namespace plc::recorder

#endif
