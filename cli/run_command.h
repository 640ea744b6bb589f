#ifndef PLC_CLI_RUN_COMMAND_H
#define PLC_CLI_RUN_COMMAND_H

#include <QtCore/QTimer>

#include <functional>
#include <memory>

#include "cli/command.h"
#include "cli/cyclic_command.h"
#include "cli/run_view.h"
#include "cli/terminal_table.h"
#include "streams/line_input.h"

namespace plc::cli {

struct RunOptions : CyclicOptions {
    int interval = 0; ///< ms; 0: as suits the kind of output.
    bool once = false;

    options::Table table() override;
};

extern const Command kRunCommand;

/// What a table on a terminal is made of.
struct TableContext {
    QString title;
    const host::DataPointFinder& points;
    bool isReadOnly;
};

/// How the values are shown while they are read.
struct RunDisplay {
    int interval; ///< ms; 0: as suits the kind of output.
    /// The table of a TerminalView; where there is no terminal, a LineView shows the values.
    std::function<std::unique_ptr<TerminalTable>(const TableContext& context)> makeTable;
    bool everyChange; ///< That of the LineView.
};

/// `plc run` and `plc watch`: keeps reading the cyclic values and shows them; writes and switches
/// stations by commands while it runs.
class RunCommand : public CyclicCommand {
public:
    RunCommand(const CyclicOptions& options, const RunDisplay& display,
               const CommandContext& context, host::DriverClaim driver)
        : CyclicCommand(options, context, std::move(driver)), m_options(options), m_display(display)
    {
    }

private:
    void aboutToBegin() override;
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

    /// Name of the project, and that it is read-only where it is.
    QString title() const;
    void startView();
    /// Carries out one line of input.
    void carryOut(const QString& line);
    void write(const QString& assignment);
    void switchStation(const QString& station, const QString& state);

    const CyclicOptions& m_options;
    const RunDisplay m_display;
    std::unique_ptr<RunView> m_view;
    std::unique_ptr<streams::LineInput> m_input;
    bool m_hasFailed = false; ///< A write that was asked for was not done.
    QTimer m_refresh;
};

} // namespace plc::cli

#endif
