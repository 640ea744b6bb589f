#ifndef PLC_CLI_WRITE_COMMAND_H
#define PLC_CLI_WRITE_COMMAND_H

#include <QtCore/QVector>

#include "cli/assignment.h"
#include "cli/link_command.h"

namespace plc::cli {

/// `plc write`: writes values and reports what the PLC said to each of them.
class WriteCommand : public LinkCommand {
public:
    explicit WriteCommand(const CommandContext& context) : LinkCommand(context) {}

private:
    bool prepare() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void settled(const Assignment& assignment, const host::TransferOutcome& outcome);

    int m_open = 0; ///< Writes that are not settled.
    bool m_allDone = true;
};

} // namespace plc::cli

#endif
