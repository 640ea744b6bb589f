#ifndef PLC_HOST_RATE_METER_H
#define PLC_HOST_RATE_METER_H

#include <QtCore/QtGlobal>

namespace plc {

/// Events per second, measured over the last second or so.
class RateMeter {
public:
    /// The first event only starts the clock: from it on the others are counted.
    void count(qint64 now)
    {
        roll(now);
        if (m_start < 0)
            m_start = now;
        else
            ++m_events;
    }
    double perSecond(qint64 now)
    {
        roll(now);
        const qint64 elapsed = m_start < 0 ? 0 : now - m_start;
        const qint64 measured = m_lastLength + elapsed;
        return measured < kShortest ? 0.0 : 1000.0 * (m_lastEvents + m_events) / double(measured);
    }

private:
    static constexpr qint64 kWindow = 1000;
    /// Over less than this a rate says nothing.
    static constexpr qint64 kShortest = 200;

    /// Ends windows that are over; two windows without an event leave nothing of the past.
    void roll(qint64 now)
    {
        while (m_start >= 0 && now - m_start >= kWindow) {
            m_lastEvents = m_events;
            m_lastLength = kWindow;
            m_events = 0;
            m_start += kWindow;
            if (m_lastEvents == 0)
                m_start = -1;
        }
    }

    qint64 m_start = -1;
    qint64 m_lastLength = 0;
    int m_events = 0;
    int m_lastEvents = 0;
};

} // namespace plc

#endif
