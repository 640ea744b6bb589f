#ifndef PLC_PROJECT_SIGNAL_READER_H
#define PLC_PROJECT_SIGNAL_READER_H

#include "project/json_node.h"
#include "project/signal.h"
#include "project/symbols.h"

namespace plc::project {

/// Reads and checks the signal of `variable`.
Signal readSignal(const JsonNode& node, const Variable& variable);

} // namespace plc::project

#endif
