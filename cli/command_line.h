#ifndef PLC_CLI_COMMAND_LINE_H
#define PLC_CLI_COMMAND_LINE_H

#include "cli/command.h"

namespace plc::cli {

/// What the command line wants.
struct Invocation {
    const Command* command = nullptr;        ///< Null: only the information is wanted.
    std::unique_ptr<CommandOptions> options; ///< Those of the command.
    QString information;                     ///< Help or the version.
};

/// Reads the command line, whose first element is the program.
Expected<Invocation> readCommandLine(const QStringList& arguments);

} // namespace plc::cli

#endif
