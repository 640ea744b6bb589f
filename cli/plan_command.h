#ifndef PLC_CLI_PLAN_COMMAND_H
#define PLC_CLI_PLAN_COMMAND_H

#include "cli/link_command.h"

namespace plc::cli {

/// `plc plan`: shows what a scan of the project's cyclic values takes, as it is and at its best.
/// Needs no PLC. Returns the exit code.
int planScan(const CommandContext& context);

} // namespace plc::cli

#endif
