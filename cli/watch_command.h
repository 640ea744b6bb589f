#ifndef PLC_CLI_WATCH_COMMAND_H
#define PLC_CLI_WATCH_COMMAND_H

#include "cli/command.h"

namespace plc::cli {

struct WatchOptions : CyclicOptions {
    int interval = 0; ///< ms; 0: as suits the kind of output.

    options::Table table() override;
};

/// `plc watch`: shows values with their trend, lowest and highest, and takes keys to sort, filter
/// and write them; where there is no terminal, a line for each change.
extern const Command kWatchCommand;

} // namespace plc::cli

#endif
