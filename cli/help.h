#ifndef PLC_CLI_HELP_H
#define PLC_CLI_HELP_H

#include "cli/command.h"

namespace plc::cli {

/// What the program can do: a list of its commands.
QString programHelp();

/// How one command is used.
QString commandHelp(const Command& command);

} // namespace plc::cli

#endif
