#include "host/points/checked_points.h"

namespace plc::host {

Expected<void> CheckedPoints::check(const DataPointFinder& finder, const DataPoint& point)
{
    const auto known = m_good.constFind(point.label);
    if (known != m_good.constEnd() && isSamePlace(*known, point))
        return {};
    Expected<void> checked = finder.check(point);
    if (!checked)
        return checked;
    if (m_good.size() >= kMostKept)
        m_good.clear();
    m_good.insert(point.label, point);
    return {};
}

} // namespace plc::host
