#ifndef PLC_HOST_RUNTIME_RUNTIME_SNAPSHOT_H
#define PLC_HOST_RUNTIME_RUNTIME_SNAPSHOT_H

#include <QtCore/QVector>

#include "host/link/session.h"
#include "host/runtime/value_table.h"

namespace plc::host {

/// What a runtime knows at one moment.
struct RuntimeSnapshot {
    LinkState link = LinkState::Down;
    QString linkDownReason; ///< Why the PLC is away; empty while it is not, or is not known to be.
    /// The values that are read cyclically at that moment, and what is known of each. Another
    /// moment may have others.
    QVector<DataPoint> points;
    QVector<ValueReading> values;
};

} // namespace plc::host

#endif
