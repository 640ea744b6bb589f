#ifndef PLC_HOST_CLI_WRITE_COMMAND_H
#define PLC_HOST_CLI_WRITE_COMMAND_H

#include <QtCore/QVector>

#include "host/cli/assignment.h"
#include "host/cli/link_command.h"

namespace plc {

/// `plc write`: writes values and reports what the PLC said to each of them.
class WriteCommand : public LinkCommand {
public:
    explicit WriteCommand(const CommandContext& context) : LinkCommand(context) {}

private:
    bool prepare() override;
    void interrupted() override;
    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;
    void settled(const Assignment& assignment, const TransferOutcome& outcome);

    int m_open = 0; ///< Writes that are not settled.
    bool m_allDone = true;
};

} // namespace plc

#endif
