#ifndef PLC_CLI_STATS_COMMAND_H
#define PLC_CLI_STATS_COMMAND_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>

#include <memory>

#include "cli/command.h"
#include "cli/cyclic_command.h"
#include "cli/stats_table.h"
#include "cli/terminal_view.h"

namespace plc::cli {

extern const Command kStatsCommand;

/// `plc stats`: keeps reading the cyclic values and tells how the link fares.
class StatsCommand : public CyclicCommand {
public:
    StatsCommand(const CyclicOptions& options, const CommandContext& context,
                 host::DriverClaim driver)
        : CyclicCommand(options, context, std::move(driver)), m_options(options)
    {
        addObserver(&m_counter);
    }

private:
    /// Counts what goes over the link.
    class Counter : public host::RuntimeListener {
    public:
        void start() { m_clock.start(); }
        qint64 elapsed() const { return m_clock.elapsed(); }
        const host::LinkStatistics& statistics() const { return m_statistics; }

        void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
        void requestSent(const host::SentRequest& request) override;
        void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                             const QByteArray& reply) override;

    private:
        host::LinkStatistics m_statistics;
        QElapsedTimer m_clock;
    };

    void aboutToBegin() override;
    void aboutToEnd() override {}
    void ended() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;

    StatsReport report();
    void refresh();

    const CyclicOptions& m_options;
    Counter m_counter;
    std::unique_ptr<TerminalView> m_view; ///< Null where there is no terminal.
    StatsTable* m_table = nullptr;        ///< That of the view.
    QTimer m_refresh;
};

} // namespace plc::cli

#endif
