#ifndef PLC_CLI_COMMANDS_H
#define PLC_CLI_COMMANDS_H

#include "cli/command.h"

namespace plc::cli {

/// All commands, in the order in which help lists them.
const QVector<const Command*>& allCommands();

QStringList commandNames();

/// The options of all commands, each name once: what may stand on a command line as long as its
/// command is not known. The readers are gone with what they wrote into.
options::Table allOptions();

} // namespace plc::cli

#endif
