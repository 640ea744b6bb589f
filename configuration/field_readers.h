#ifndef PLC_CONFIGURATION_FIELD_READERS_H
#define PLC_CONFIGURATION_FIELD_READERS_H

#include "project/json_node.h"

namespace plc::configuration {

// What stands in several places of a configuration. Each reports what does not fit and then
// returns a value that does.

QString readNonEmpty(const project::JsonNode& node, const QString& expected);
QString readPath(const project::JsonNode& node);
/// The path of a Unix socket, which systems allow few bytes for.
QString readSocketPath(const project::JsonNode& node);
quint16 readPort(const project::JsonNode& node);
/// Milliseconds: a number of them, or a text such as "500ms" or "1m30s".
int readDuration(const project::JsonNode& node, int lowest, int highest);
/// Bytes: a number of them, or a text such as "100M".
qint64 readSize(const project::JsonNode& node, qint64 lowest);

} // namespace plc::configuration

#endif
