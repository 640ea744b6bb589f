#ifndef PLC_CLI_WATCH_COMMAND_H
#define PLC_CLI_WATCH_COMMAND_H

#include "cli/run_command.h"
#include "cli/watch_state.h"

namespace plc::cli {

/// `plc watch`: shows values with their trend, lowest and highest, and takes keys to sort, filter
/// and write them; where there is no terminal, a line for each change.
class WatchCommand : public RunCommand {
public:
    explicit WatchCommand(const CommandContext& context) : RunCommand(context) {}

private:
    std::unique_ptr<RunView> screenView(const CarryOut& carryOut) override;
    std::unique_ptr<RunView> lineView() override;

    WatchState::Checked check(const QString& assignment);
};

} // namespace plc::cli

#endif
