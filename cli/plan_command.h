#ifndef PLC_CLI_PLAN_COMMAND_H
#define PLC_CLI_PLAN_COMMAND_H

#include "cli/command.h"

namespace plc::cli {

struct PlanOptions : ProjectOptions {
    double roundTrip = 1;   ///< ms
    double bandwidth = 100; ///< Mbit/s

    options::Table table() override;
    Expected<void> check() override;
};

/// `plc plan`: shows what a scan of the project's cyclic values takes, as it is and at its best.
/// Needs no PLC.
extern const Command kPlanCommand;

} // namespace plc::cli

#endif
