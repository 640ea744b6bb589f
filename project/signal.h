#ifndef PLC_PROJECT_SIGNAL_H
#define PLC_PROJECT_SIGNAL_H

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace plc::project {

/// How the simulator lets a variable live; `parameters` are the signal's own (period, amplitude,
/// …).
struct Signal {
    QString kind; ///< "constant", "ramp", "sine", "square", "counter" or "walk"
    QJsonObject parameters;
};

} // namespace plc::project

#endif
