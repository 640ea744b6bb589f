#ifndef PLC_GATEWAY_CONFIG_TOPIC_NAMES_H
#define PLC_GATEWAY_CONFIG_TOPIC_NAMES_H

#include "project/json_node.h"

namespace plc::gateway {

/// What is wrong with a name that becomes one level of a topic; empty: nothing.
QString topicNameProblem(const QString& name);

/// The name of a group, a node, a device or a host. Reports what does not fit.
QString readTopicName(const project::JsonNode& node);

} // namespace plc::gateway

#endif
