#ifndef PLC_CLI_ONCE_COMMAND_H
#define PLC_CLI_ONCE_COMMAND_H

#include <QtCore/QTimer>

#include "cli/run_command.h"

namespace plc::cli {

/// `plc run --once`: reads the cyclic values, grouped as they are when they are read again and
/// again, until each was read once, and prints them.
class OnceCommand : public LinkCommand {
public:
    OnceCommand(const RunOptions& options, const CommandContext& context, host::DriverClaim driver)
        : LinkCommand(options, context, std::move(driver), options.cycleTime), m_options(options)
    {
    }

private:
    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSettled() override;

    /// How the read of a row ended; `missing` where it has not.
    host::TransferOutcome outcome(int row, const host::TransferOutcome& missing);
    /// Whether nothing more will come: all values were read, refused, or are not asked for.
    bool isComplete();
    /// Prints the values, and of those that are missing that they are.
    void report(const host::TransferOutcome& missing);

    const RunOptions& m_options;
    QTimer m_patience;
    int m_settledRows = 0; ///< From the first on.
};

} // namespace plc::cli

#endif
