#ifndef PLC_PANEL_MODEL_MOMENT_H
#define PLC_PANEL_MODEL_MOMENT_H

#include <QtCore/QDateTime>

#include "values/steady_time.h"

namespace plc::panel {

/// A moment by two clocks: one that people read and may set, and one to measure how long something
/// takes.
struct Moment {
    qint64 time = 0;   ///< Milliseconds since 1970-01-01T00:00:00Z.
    qint64 steady = 0; ///< Milliseconds, as values::steadyTime() counts.

    Moment before(qint64 duration) const { return {time - duration, steady - duration}; }
};

inline Moment currentMoment()
{
    return {QDateTime::currentMSecsSinceEpoch(), values::steadyTime()};
}

} // namespace plc::panel

#endif
