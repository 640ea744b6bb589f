#ifndef PLC_HOST_CLI_LABEL_COMMANDS_H
#define PLC_HOST_CLI_LABEL_COMMANDS_H

#include "host/cli/link_command.h"

namespace plc {

// The commands that need no PLC. Both return the exit code.

/// `plc resolve`: shows where labels lead.
int resolveLabels(const CommandContext& context);

/// `plc symbols`: lists the variables of the project.
int listSymbols(const CommandContext& context);

} // namespace plc

#endif
