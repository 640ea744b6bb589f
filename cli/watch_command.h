#ifndef PLC_CLI_WATCH_COMMAND_H
#define PLC_CLI_WATCH_COMMAND_H

#include "cli/run_command.h"
#include "cli/watch_state.h"

namespace plc::cli {

struct WatchOptions : CyclicOptions {
    int interval = 0; ///< ms; 0: as suits the kind of output.

    options::Table table() override;
};

extern const Command kWatchCommand;

/// `plc watch`: shows values with their trend, lowest and highest, and takes keys to sort, filter
/// and write them; where there is no terminal, a line for each change.
class WatchCommand : public RunCommand {
public:
    WatchCommand(const WatchOptions& options, const CommandContext& context)
        : RunCommand(options, options.interval, context), m_options(options)
    {
    }

private:
    std::unique_ptr<RunView> screenView(const CarryOut& carryOut) override;
    std::unique_ptr<RunView> lineView() override;

    WatchState::Checked check(const QString& assignment);

    const WatchOptions& m_options;
};

} // namespace plc::cli

#endif
