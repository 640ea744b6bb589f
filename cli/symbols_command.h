#ifndef PLC_CLI_SYMBOLS_COMMAND_H
#define PLC_CLI_SYMBOLS_COMMAND_H

#include "cli/link_command.h"

namespace plc::cli {

// What `plc symbols` shows besides the plain list. Both return the exit code.

/// `plc symbols --tree`: scopes, structures and members.
int showTree(const CommandContext& context);

/// `plc symbols --check`: variables that share memory, and gaps. Reads the project itself, also one
/// whose variables share memory without being marked as overlays.
int checkMemory(const Options& options);

} // namespace plc::cli

#endif
