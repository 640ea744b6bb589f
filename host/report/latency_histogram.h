#ifndef PLC_HOST_REPORT_LATENCY_HISTOGRAM_H
#define PLC_HOST_REPORT_LATENCY_HISTOGRAM_H

#include <QtCore/QtGlobal>

#include <vector>

#include "values/export.h"

namespace plc::host {

/// How often times of which length occurred, in memory that does not grow with their number: times
/// of up to 256 ns are counted each by itself, longer ones with those that differ from them by less
/// than 1/128.
class PLC_HOST_EXPORT LatencyHistogram {
public:
    LatencyHistogram();

    void add(qint64 nanoseconds);

    quint64 count() const { return m_count; }
    /// Exact; 0 while there are none.
    qint64 longest() const { return m_longest; }
    /// The shortest time that this share (above 0, at most 1) of all times does not exceed; up to
    /// 1/128 more than it is, never less. 0 while there are no times.
    qint64 percentile(double share) const;

private:
    std::vector<quint64> m_counts;
    quint64 m_count = 0;
    qint64 m_longest = 0;
};

} // namespace plc::host

#endif
