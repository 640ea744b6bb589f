#ifndef PLC_HOST_CLI_IMPORT_COMMAND_H
#define PLC_HOST_CLI_IMPORT_COMMAND_H

#include "host/cli/options.h"

namespace plc {

/// `plc import`: makes a project of declarations in structured text, or puts their symbols into
/// one. Needs no PLC and no driver. Returns the exit code.
int importSymbols(const Options& options);

} // namespace plc

#endif
