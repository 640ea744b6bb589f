#include "database/confirmed_time.h"

#include <algorithm>

namespace plc::database {

std::optional<qint64> ConfirmedTime::update(qint64 now, qint64 steady)
{
    const qint64 offset = now - steady;
    if (!m_since || qAbs(offset - m_offset) > kDeviation) {
        m_since = steady;
        m_offset = offset;
    }
    if (m_confirmed)
        *m_confirmed += steady - m_last;
    m_last = steady;
    if (steady - *m_since >= kProbation)
        m_confirmed = now;
    if (!m_confirmed)
        return {};
    return std::min(*m_confirmed, now);
}

} // namespace plc::database
