#ifndef PLC_GATEWAY_CONFIG_FIELD_READERS_H
#define PLC_GATEWAY_CONFIG_FIELD_READERS_H

#include "project/json_node.h"

namespace plc::gateway {

// What stands in several places of a configuration. Each reports what does not fit and then
// returns a value that does.

/// What is wrong with a name that becomes one level of a topic; empty: nothing.
QString topicNameProblem(const QString& name);

/// The name of a group, a node, a device or a host.
QString readTopicName(const project::JsonNode& node);

QString readNonEmpty(const project::JsonNode& node, const QString& expected);
QString readPath(const project::JsonNode& node);
/// The path of a Unix socket, which systems allow few bytes for.
QString readSocketPath(const project::JsonNode& node);
quint16 readPort(const project::JsonNode& node);
/// Milliseconds: a number of them, or a text such as "500ms" or "1m30s".
int readDuration(const project::JsonNode& node, int lowest, int highest);
/// Bytes: a number of them, or a text such as "100M".
qint64 readSize(const project::JsonNode& node, qint64 lowest);

} // namespace plc::gateway

#endif
