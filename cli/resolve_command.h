#ifndef PLC_CLI_RESOLVE_COMMAND_H
#define PLC_CLI_RESOLVE_COMMAND_H

#include "cli/command.h"

namespace plc::cli {

struct ResolveOptions : ProjectOptions {
    QString labelFile; ///< CSV with further labels; empty: none.

    options::Table table() override;
    QString fileOfArguments() const override { return labelFile; }
};

/// `plc resolve`: shows where labels lead. Needs no PLC.
extern const Command kResolveCommand;

} // namespace plc::cli

#endif
