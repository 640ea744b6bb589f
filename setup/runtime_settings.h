#ifndef PLC_SETUP_RUNTIME_SETTINGS_H
#define PLC_SETUP_RUNTIME_SETTINGS_H

#include "host/runtime/runtime_settings.h"
#include "project/project.h"

namespace plc::setup {

/// What the settings of a project mean to the host. `cycleTime` is SessionTimes::cycleTime.
inline host::RuntimeSettings runtimeSettings(const project::ProjectSettings& project, int cycleTime)
{
    host::RuntimeSettings settings;
    settings.maxReadBytes = project.maxReadBytes;
    settings.retryLimit = project.retryLimit;
    settings.defaultStation = project.defaultStation;
    settings.multiStation = project.multiStation;
    settings.times.connectTimeout = project.connectTimeout;
    settings.times.replyTimeout = project.replyTimeout;
    settings.times.reconnectDelay = project.reconnectDelay;
    settings.times.reconnectDelayLimit = project.reconnectDelayLimit;
    settings.times.cycleTime = cycleTime;
    settings.staleAfter = project.staleAfter;
    settings.readOnly = project.readOnly;
    return settings;
}

} // namespace plc::setup

#endif
