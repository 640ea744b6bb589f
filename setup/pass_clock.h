#ifndef PLC_SETUP_PASS_CLOCK_H
#define PLC_SETUP_PASS_CLOCK_H

#include <QtCore/QtGlobal>

namespace plc::setup {

/// How long the passes over all values of a PLC take, from the end of one to that of the next.
class PassClock {
public:
    /// The link came or went: what was measured on another connection says nothing of this one.
    /// `passes` as of the session.
    void restart(quint64 passes)
    {
        m_passes = passes;
        m_endedAt = -1;
        m_duration = 0;
    }
    /// Whether a pass has ended since the last call. `now` in milliseconds.
    bool hasEnded(quint64 passes, qint64 now)
    {
        if (passes == m_passes)
            return false;
        m_passes = passes;
        m_duration = m_endedAt < 0 ? 0 : now - m_endedAt;
        m_endedAt = now;
        return true;
    }
    /// Milliseconds; 0: two passes have not ended yet.
    qint64 duration() const { return m_duration; }

private:
    quint64 m_passes = 0;
    qint64 m_endedAt = -1;
    qint64 m_duration = 0;
};

} // namespace plc::setup

#endif
