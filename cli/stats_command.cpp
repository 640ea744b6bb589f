#include "cli/stats_command.h"

namespace plc::cli {
namespace {

int tellStatistics(const CyclicOptions& options)
{
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return StatsCommand(options, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kStatsCommand = {
    "stats",
    {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
    "read values as run does and tell how the link fares: requests, round trips, retries, "
    "refusals, failures",
    {kLabelNote, kPatternNote, kCyclicDurationNote},
    makeOptions<CyclicOptions>,
    execute<CyclicOptions, tellStatistics>};

void StatsCommand::aboutToBegin()
{
    m_counter.start();
    if (!m_options.json && TerminalView::isPossible()) {
        auto table = std::make_unique<StatsTable>(project().name);
        m_table = table.get();
        m_view = std::make_unique<TerminalView>(
            peer(), [this](const QString&) { interrupted(); }, std::move(table));
        QObject::connect(&m_refresh, &QTimer::timeout, &m_refresh, [this] { refresh(); });
        m_refresh.start(m_view->usualInterval());
    }
}

void StatsCommand::ended()
{
    if (m_view) {
        refresh();
        m_view->end(runtime(), m_counter.elapsed());
    } else if (m_options.json) {
        print(statsJson(report()));
    } else {
        print(QStringLiteral("%1 at %2").arg(project().name, peer()));
        for (const QString& line : statsLines(report()))
            print(line);
    }
}

void StatsCommand::Counter::linkChanged(host::LinkState state, const QString& reason,
                                        int retryDelay)
{
    m_statistics.linkChanged(state, reason, retryDelay);
}

void StatsCommand::Counter::requestSent(const host::SentRequest&)
{
    m_statistics.requestSent(m_clock.nsecsElapsed());
}

void StatsCommand::Counter::requestAnswered(const host::SentRequest& request,
                                            const host::Answer& answer, const QByteArray&)
{
    m_statistics.requestAnswered(request, answer, m_clock.nsecsElapsed());
}

void StatsCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    if (m_view)
        m_view->linkChanged(state, reason, retryDelay);
}

StatsReport StatsCommand::report()
{
    StatsReport report;
    report.link = m_counter.statistics();
    report.bytesSent = link().bytesSent();
    report.bytesReceived = link().bytesReceived();
    const host::ValueTable& values = runtime().values();
    for (int row = 0; row < values.size(); ++row)
        report.values += values.reads(row);
    report.duration = m_counter.elapsed();
    return report;
}

void StatsCommand::refresh()
{
    m_table->setReport(report());
    m_view->refresh(runtime(), m_counter.elapsed());
}

} // namespace plc::cli
