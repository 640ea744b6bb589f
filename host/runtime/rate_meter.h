#ifndef PLC_HOST_RUNTIME_RATE_METER_H
#define PLC_HOST_RUNTIME_RATE_METER_H

#include <QtCore/QtGlobal>

#include "values/export.h"

namespace plc::host {

/// Events per second, over the last second or, of rarer events, over the time between two of them.
class PLC_HOST_EXPORT RateMeter {
public:
    void count(qint64 now)
    {
        // The first event only starts the clock: from it on the others are counted.
        if (m_start < 0) {
            m_start = now;
            return;
        }
        ++m_events;
        if (now - m_start < kWindow)
            return;
        m_rate = perSecond(m_events, now - m_start);
        m_start = now;
        m_events = 0;
    }

    double perSecond(qint64 now) const
    {
        const qint64 elapsed = m_start < 0 ? 0 : now - m_start;
        if (m_rate < 0)
            return elapsed < kShortest ? 0.0 : perSecond(m_events, elapsed);
        // When no more events come the rate falls: it cannot be more than if the next came now.
        return elapsed <= 0 ? m_rate : qMin(m_rate, perSecond(m_events + 1, elapsed));
    }

private:
    static constexpr qint64 kWindow = 1000;
    /// Over less than this a rate says nothing.
    static constexpr qint64 kShortest = 200;

    static double perSecond(int events, qint64 milliseconds)
    {
        return 1000.0 * events / double(milliseconds);
    }

    qint64 m_start = -1;
    int m_events = 0;
    double m_rate = -1; ///< Of the last window; below 0 before there was one.
};

} // namespace plc::host

#endif
