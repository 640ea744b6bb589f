#ifndef PLC_CLI_WRITE_COMMAND_H
#define PLC_CLI_WRITE_COMMAND_H

#include <QtCore/QVector>

#include "cli/assignment.h"
#include "cli/command.h"
#include "cli/link_command.h"

namespace plc::cli {

extern const Command kWriteCommand;

/// `plc write`: writes values and reports what the PLC said to each of them.
class WriteCommand : public LinkCommand {
public:
    WriteCommand(const LinkOptions& options, const CommandContext& context,
                 host::DriverClaim driver)
        : LinkCommand(options, context, std::move(driver)), m_options(options)
    {
    }

private:
    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void settled(const Assignment& assignment, const host::TransferOutcome& outcome);

    const LinkOptions& m_options;
    QVector<Assignment> m_assignments;
    int m_open = 0; ///< Writes that are not settled.
    bool m_allDone = true;
};

} // namespace plc::cli

#endif
