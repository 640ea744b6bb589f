#ifndef PLC_HOST_LINK_BACKOFF_H
#define PLC_HOST_LINK_BACKOFF_H

#include <QtCore/QtGlobal>

#include "values/export.h"

namespace plc::host {

/// How long to wait before the next attempt: doubles from failure to failure up to a limit, and
/// begins anew after a success.
class PLC_HOST_EXPORT Backoff {
public:
    Backoff(int first, int limit) : m_first(qMax(1, first)), m_limit(qMax(m_first, limit)) {}

    /// Milliseconds to wait after this failure.
    int next()
    {
        m_delay = m_delay == 0 ? m_first : int(qMin<qint64>(m_limit, 2 * qint64(m_delay)));
        return m_delay;
    }
    void reset() { m_delay = 0; }

private:
    int m_first;
    int m_limit;
    int m_delay = 0;
};

} // namespace plc::host

#endif
