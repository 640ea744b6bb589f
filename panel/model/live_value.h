#ifndef PLC_PANEL_MODEL_LIVE_VALUE_H
#define PLC_PANEL_MODEL_LIVE_VALUE_H

#include <QtCore/QByteArray>

#include "panel/model/moment.h"

namespace plc::panel {

enum class Quality {
    Good,
    Stale, ///< Too old to be relied on, or never read.
    Bad    ///< The PLC refuses to give the value.
};

/// "good", "stale", "bad"
inline const char* qualityWord(Quality quality)
{
    constexpr const char* kWords[] = {"good", "stale", "bad"};
    return kWords[int(quality)];
}

/// What is known of a value of a PLC.
struct LiveValue {
    QByteArray bytes; ///< As GetRegisterData() gives them; empty if the value was never read.
    Quality quality = Quality::Stale;
    /// When the PLC was asked for these bytes, in milliseconds since 1970-01-01T00:00:00Z; 0: the
    /// value was never read.
    qint64 time = 0;
    qint64 steady = 0; ///< The same moment as values::steadyTime() counts.

    bool wasRead() const { return time != 0; }
    Moment moment() const { return {time, steady}; }
};

} // namespace plc::panel

#endif
