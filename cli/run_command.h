#ifndef PLC_CLI_RUN_COMMAND_H
#define PLC_CLI_RUN_COMMAND_H

#include <QtCore/QTimer>

#include <functional>
#include <memory>

#include "cli/command.h"
#include "cli/cyclic_command.h"
#include "cli/line_input.h"
#include "cli/run_view.h"

namespace plc::cli {

struct RunOptions : CyclicOptions {
    int interval = 0; ///< ms; 0: as suits the kind of output.
    bool once = false;

    options::Table table() override;
};

extern const Command kRunCommand;

/// `plc run`: keeps reading the cyclic values and shows them; writes and switches stations by
/// commands while it runs.
class RunCommand : public CyclicCommand {
public:
    /// `interval` as in RunOptions.
    RunCommand(const CyclicOptions& options, int interval, const CommandContext& context)
        : CyclicCommand(options, context), m_options(options), m_interval(interval)
    {
    }

protected:
    using CarryOut = std::function<void(const QString&)>;

    /// Name of the project, and that it is read-only where it is.
    QString title() const;

    /// The view for a terminal, and for all else. `carryOut` takes the user's commands.
    virtual std::unique_ptr<RunView> screenView(const CarryOut& carryOut);
    virtual std::unique_ptr<RunView> lineView();

private:
    void begin() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;
    void requestSettled() override;
    void valueRefused(int row) override;
    void valueGivenAgain(int row) override;
    bool hasOpenTransfers() override { return runtime().openWrites() > 0; }
    bool hasFailed() const override { return m_hasFailed; }
    void aboutToEnd() override;
    void ended() override;

    void startView();
    /// Carries out one line of input.
    void carryOut(const QString& line);
    void write(const QString& assignment);
    void switchStation(const QString& station, const QString& state);

    const CyclicOptions& m_options;
    const int m_interval;
    std::unique_ptr<RunView> m_view;
    std::unique_ptr<LineInput> m_input;
    bool m_hasFailed = false; ///< A write that was asked for was not done.
    QTimer m_refresh;
};

} // namespace plc::cli

#endif
