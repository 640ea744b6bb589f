#ifndef PLC_PANEL_MODEL_PLC_LINK_H
#define PLC_PANEL_MODEL_PLC_LINK_H

#include <QtCore/QString>

namespace plc::panel {

/// How the connection to a PLC is.
struct PlcLink {
    enum State {
        Up,
        Connecting, ///< For the first time; nothing is known yet.
        Down        ///< Also while it is tried again.
    };

    State state = Connecting;
    qint64 since = 0; ///< Of the state; milliseconds since 1970-01-01T00:00:00Z.
    QString reason;   ///< Why it is down.
};

/// "up", "connecting", "down"
inline const char* linkWord(PlcLink::State state)
{
    constexpr const char* kWords[] = {"up", "connecting", "down"};
    return kWords[state];
}

} // namespace plc::panel

#endif
