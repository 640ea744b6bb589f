#ifndef PLC_HOST_CLI_RUN_COMMAND_H
#define PLC_HOST_CLI_RUN_COMMAND_H

#include <QtCore/QTimer>

#include <memory>

#include "host/cli/line_input.h"
#include "host/cli/link_command.h"
#include "host/cli/run_view.h"

namespace plc {

/// `plc run`: keeps reading the cyclic values and shows them; writes and switches stations by
/// commands while it runs.
class RunCommand : public LinkCommand {
public:
    explicit RunCommand(const CommandContext& context) : LinkCommand(context) {}

private:
    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;
    void requestAnswered(const SentRequest& request, const Answer& answer,
                         const QByteArray& reply) override;

    void startView();
    void startTimers();
    /// Carries out one line of input.
    void carryOut(const QString& line);
    void write(const QString& assignment);
    void switchStation(const QString& station, const QString& state);
    void end(ExitCode code);
    bool wasServed();

    std::unique_ptr<RunView> m_view;
    std::unique_ptr<LineInput> m_input;
    QTimer m_refresh;
    QTimer m_duration;
    bool m_hasRead = false; ///< The PLC answered a request of ours with success.
};

} // namespace plc

#endif
