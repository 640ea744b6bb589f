#ifndef PLC_CLI_LOG_EXPORT_COMMAND_H
#define PLC_CLI_LOG_EXPORT_COMMAND_H

#include "cli/log_command.h"
#include "log/log_export.h"

namespace plc::cli {

/// What of `plc log` has no meaning beside --export or --convert, or is missing.
Expected<void> checkExport(const LogOptions& options);

/// What is exported; the options are those of an export.
log::ExportFormat exportFormat(const LogOptions& options);

/// Turns one file into another. Needs no PLC. Returns the exit code.
int exportOrConvert(const LogOptions& options);

/// Tells what was written in how many ms.
void printLogResult(const LogOptions& options, qint64 records, qint64 duration);

} // namespace plc::cli

#endif
