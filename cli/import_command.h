#ifndef PLC_CLI_IMPORT_COMMAND_H
#define PLC_CLI_IMPORT_COMMAND_H

#include "cli/command.h"
#include "iec/importer.h"

namespace plc::cli {

struct ImportOptions : CommandOptions {
    iec::ImportOptions places;
    QString output; ///< Empty: the standard output.
    QString merged; ///< The project that the symbols are put into; empty: a new one.
    QString name;   ///< Of a new project; empty: that of the first file.
    bool allWarnings = false;

    options::Table table() override;
    Expected<void> check() override;
};

/// `plc import`: makes a project of declarations in structured text, or puts their symbols into
/// one. Needs neither project nor PLC nor driver.
extern const Command kImportCommand;

} // namespace plc::cli

#endif
