#include "panel/access/leaky_buckets.h"

#include <algorithm>

namespace plc::panel {

qint64 LeakyBuckets::wait(const QString& name, qint64 now) const
{
    const qint64 room = qint64(m_limit.burst - 1) * m_limit.interval;
    return std::max<qint64>(0, m_full.value(name, now) - room - now);
}

void LeakyBuckets::fill(const QString& name, qint64 now)
{
    if (!m_full.contains(name) && int(m_full.size()) >= kMostNames)
        makeRoom(now);
    m_full[name] = std::max(m_full.value(name, now), now) + m_limit.interval;
}

void LeakyBuckets::makeRoom(qint64 now)
{
    auto emptiest = m_full.begin();
    for (auto bucket = m_full.begin(); bucket != m_full.end();) {
        if (*bucket <= now) {
            bucket = m_full.erase(bucket);
            emptiest = m_full.begin();
            continue;
        }
        if (*bucket < *emptiest)
            emptiest = bucket;
        ++bucket;
    }
    if (int(m_full.size()) >= kMostNames)
        m_full.erase(emptiest);
}

} // namespace plc::panel
