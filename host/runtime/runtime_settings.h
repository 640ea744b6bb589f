#ifndef PLC_HOST_RUNTIME_RUNTIME_SETTINGS_H
#define PLC_HOST_RUNTIME_RUNTIME_SETTINGS_H

#include "host/link/session.h"
#include "host/points/data_point.h"

namespace plc::host {

/// How a runtime exchanges values with its PLC.
struct RuntimeSettings : PointSettings {
    int retryLimit = 2; ///< Failed replies tolerated in one transaction.
    SessionTimes times;
    int staleAfter = 3000; ///< Milliseconds after which a value is no longer relied on.
    bool readOnly = false; ///< Nothing is ever written.
};

} // namespace plc::host

#endif
