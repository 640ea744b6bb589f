#ifndef PLC_GATEWAY_CONFIG_SAME_SETTINGS_H
#define PLC_GATEWAY_CONFIG_SAME_SETTINGS_H

#include "gateway/config/settings.h"

namespace plc::gateway {

/// Whether nothing is to be done for a device or a broker when a configuration is read again.
bool isSame(const DeviceSettings& a, const DeviceSettings& b);
bool isSame(const BrokerSettings& a, const BrokerSettings& b);
bool isSame(const QVector<BrokerSettings>& a, const QVector<BrokerSettings>& b);

/// Whether all is the same but for devices and brokers.
bool isSameService(const GatewaySettings& a, const GatewaySettings& b);

} // namespace plc::gateway

#endif
