#ifndef PLC_HOST_POINTS_CHECKED_POINTS_H
#define PLC_HOST_POINTS_CHECKED_POINTS_H

#include <QtCore/QHash>

#include "host/points/data_point.h"

namespace plc::host {

/// Remembers which data points were checked: who writes a value writes it again and again, and to
/// look its label up takes longer than to queue the write.
class CheckedPoints {
public:
    static constexpr int kMostKept = 4096;

    /// As DataPointFinder::check() of always the same finder.
    Expected<void> check(const DataPointFinder& finder, const DataPoint& point);

    int size() const { return int(m_good.size()); }

private:
    QHash<QString, DataPoint> m_good; ///< By their labels; of each the one checked last.
};

} // namespace plc::host

#endif
