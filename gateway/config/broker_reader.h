#ifndef PLC_GATEWAY_CONFIG_BROKER_READER_H
#define PLC_GATEWAY_CONFIG_BROKER_READER_H

#include "gateway/config/settings.h"
#include "project/json_node.h"

namespace plc::gateway {

/// The list `brokers` of a configuration.
QVector<BrokerSettings> readBrokers(const project::JsonNode& list);

} // namespace plc::gateway

#endif
