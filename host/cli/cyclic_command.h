#ifndef PLC_HOST_CLI_CYCLIC_COMMAND_H
#define PLC_HOST_CLI_CYCLIC_COMMAND_H

#include <QtCore/QTimer>

#include "host/cli/link_command.h"

namespace plc {

/// A command that reads values again and again until its time is over or the user ends it.
class CyclicCommand : public LinkCommand {
protected:
    explicit CyclicCommand(const CommandContext& context) : LinkCommand(context) {}

    bool prepare() override { return readCyclically(); }
    void begin() override;
    void interrupted() override { end(kExitDone); }
    void outputLost() override { end(kExitRefused); }
    void requestAnswered(const SentRequest& request, const Answer& answer,
                         const QByteArray& reply) override;

    /// What is under way is still settled before the link is closed.
    void end(ExitCode code);
    /// Called by end() before the link is closed, and behind it.
    virtual void aboutToEnd() = 0;
    virtual void ended() = 0;

private:
    bool wasServed();

    QTimer m_duration;
    bool m_hasRead = false; ///< The PLC answered a request of ours with success.
};

} // namespace plc

#endif
