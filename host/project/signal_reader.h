#ifndef PLC_HOST_PROJECT_SIGNAL_READER_H
#define PLC_HOST_PROJECT_SIGNAL_READER_H

#include "host/project/json_node.h"
#include "host/project/project.h"

namespace plc {

/// Reads and checks the signal of `variable`.
Signal readSignal(const JsonNode& node, const Variable& variable);

} // namespace plc

#endif
