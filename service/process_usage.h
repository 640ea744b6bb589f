#ifndef PLC_SERVICE_PROCESS_USAGE_H
#define PLC_SERVICE_PROCESS_USAGE_H

#include <QtCore/QtGlobal>

namespace plc::service {

/// What the process has taken of the machine.
struct ProcessUsage {
    double processorTime = 0; ///< Seconds.
    qint64 residentBytes = 0;
};

/// Of this process, as the system has it.
ProcessUsage processUsage();

} // namespace plc::service

#endif
