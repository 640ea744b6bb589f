#ifndef PLC_CLI_LABEL_COMMANDS_H
#define PLC_CLI_LABEL_COMMANDS_H

#include "cli/link_command.h"

namespace plc::cli {

// The commands that need no PLC. Both return the exit code.

/// `plc resolve`: shows where labels lead.
int resolveLabels(const CommandContext& context);

/// `plc symbols`: lists the variables of the project.
int listSymbols(const CommandContext& context);

} // namespace plc::cli

#endif
