#ifndef PLC_CLI_SYMBOLS_COMMAND_H
#define PLC_CLI_SYMBOLS_COMMAND_H

#include <optional>

#include "cli/command.h"

namespace plc::cli {

struct SymbolsOptions : ProjectOptions {
    bool csv = false;
    bool tree = false;
    std::optional<int> depth; ///< Levels of the tree; not given: all.
    bool memoryCheck = false;
    std::optional<int> gap; ///< Bytes of the smallest gap that is listed; not given: 1.

    options::Table table() override;
    Expected<void> check() override;
};

/// `plc symbols`: lists the variables of the project, or shows them as a tree, or checks which of
/// them share memory. Needs no PLC.
extern const Command kSymbolsCommand;

} // namespace plc::cli

#endif
