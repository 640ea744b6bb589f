#ifndef PLC_GATEWAY_CONFIG_DEVICE_READER_H
#define PLC_GATEWAY_CONFIG_DEVICE_READER_H

#include "gateway/config/settings.h"
#include "project/json_node.h"

namespace plc::gateway {

/// The list `devices` of a configuration. `hasAudit`: whether writes can be told.
QVector<DeviceSettings> readDevices(const project::JsonNode& list, bool hasAudit);

} // namespace plc::gateway

#endif
