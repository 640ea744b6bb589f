#ifndef PLC_GATEWAY_DEVICES_SAMPLE_TAKER_H
#define PLC_GATEWAY_DEVICES_SAMPLE_TAKER_H

#include <QtCore/QVector>

#include "gateway/model/metric.h"
#include "host/runtime/value_table.h"

namespace plc::gateway {

/// Finds what is new of a PLC's values since it was asked last.
///
/// 1. A good value is told when it was not good before, or when it differs from the one that was
///    told last: by any byte, or by the deadband where there is one. It has the time of its
///    request.
/// 2. A value that becomes stale or refused is told once, with the time at which that was found.
/// 3. What was told last of each metric is what consumers are to know of it.
class SampleTaker {
public:
    /// The rows of the tables that take() is given are those of `metrics`. `time` is that of the
    /// beginning, at which nothing is known.
    SampleTaker(const QVector<Metric>& metrics, qint64 time);

    /// `now` is the table's clock; `time` the same moment in milliseconds since
    /// 1970-01-01T00:00:00Z.
    QVector<Sample> take(const host::ValueTable& values, qint64 now, qint64 time);
    /// One for each metric, in their order.
    const QVector<Sample>& told() const { return m_told; }

private:
    bool isNews(const Metric& metric, const Sample& told, Quality quality,
                const QByteArray& bytes) const;

    const QVector<Metric> m_metrics;
    QVector<Sample> m_told;
};

} // namespace plc::gateway

#endif
