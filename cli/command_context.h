#ifndef PLC_CLI_COMMAND_CONTEXT_H
#define PLC_CLI_COMMAND_CONTEXT_H

#include <functional>

#include "cli/command_options.h"
#include "host/driver/driver_claim.h"
#include "host/driver/driver_library.h"
#include "setup/runtime_settings.h"

namespace plc::cli {

/// What the commands with a project work with.
struct CommandContext {
    project::Project project; ///< With what the options put into it.
    host::DriverFunctions driver;
    QStringList arguments; ///< With those of the file that the options name.

    host::RuntimeSettings runtimeSettings(int cycleTime = kUsualCycleTime) const
    {
        return setup::runtimeSettings(project.settings, cycleTime);
    }
};

/// Loads the project and the driver and carries the command out with them. Returns the exit code,
/// after complaining if something cannot be loaded.
int inContext(const ProjectOptions& options,
              const std::function<int(const CommandContext& context)>& carryOut);

/// The same for a command that has the driver to itself; an error where another has it.
int withDriver(
    const ProjectOptions& options,
    const std::function<int(const CommandContext& context, host::DriverClaim driver)>& carryOut);

/// Complains. Returns the exit code of wrong usage.
int usageError(const Error& error);

} // namespace plc::cli

#endif
