#ifndef PLC_CLI_IMPORT_COMMAND_H
#define PLC_CLI_IMPORT_COMMAND_H

#include "cli/options.h"

namespace plc::cli {

/// `plc import`: makes a project of declarations in structured text, or puts their symbols into
/// one. Needs no PLC and no driver. Returns the exit code.
int importSymbols(const Options& options);

} // namespace plc::cli

#endif
