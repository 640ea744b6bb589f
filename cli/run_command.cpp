#include "cli/run_command.h"

#include <unistd.h>

#include "cli/line_view.h"
#include "cli/once_command.h"
#include "cli/screen_table.h"
#include "cli/terminal_view.h"
#include "host/report/frame_text.h"
#include "options/readers.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

constexpr char kInputNote[] =
    "While it runs, it takes these lines from its standard input:\n"
    "  write LABEL=VALUE       write a value; its outcome is printed\n"
    "  station N off|on        switch a station off or on\n"
    "  quit                    end, when the writes before it have their outcomes\n"
    "On a terminal it shows the values in place: arrows and PgUp/PgDn scroll, \":\"\n"
    "begins one of the lines above, q ends. Otherwise it prints values that changed,\n"
    "with their age, and all that happens to the link, line by line.";

std::unique_ptr<TerminalTable> makeTable(const TableContext& context)
{
    return std::make_unique<ScreenTable>(context.title);
}

int run(const RunOptions& options)
{
    const RunDisplay display{options.interval, makeTable, false};
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return options.once ? OnceCommand(options, context, std::move(driver)).execute()
                            : RunCommand(options, display, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kRunCommand = {
    "run",
    {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
    "read the project's cyclic labels, or these, again and again, and show them",
    {kInputNote, kLabelNote, kPatternNote, kCyclicDurationNote},
    makeOptions<RunOptions>,
    execute<RunOptions, run>};

options::Table RunOptions::table()
{
    return options::Table{
               {"--once", "print each value once and end", options::flag(&once)},
               intervalOption(&interval, "time between two screens (200ms) or two prints (1s)",
                              "Time between two screens, 200ms if not given, or two prints, 1s if "
                              "not given.")} +
           CyclicOptions::table();
}

void RunCommand::aboutToBegin()
{
    startView();
    QObject::connect(&m_refresh, &QTimer::timeout, &m_refresh,
                     [this] { m_view->refresh(runtime(), link().now()); });
    m_refresh.start(m_display.interval > 0 ? m_display.interval : m_view->usualInterval());
}

void RunCommand::startView()
{
    const auto carryOutLine = [this](const QString& line) { carryOut(line); };
    if (!m_options.json && TerminalView::isPossible()) {
        m_view = std::make_unique<TerminalView>(
            peer(), carryOutLine,
            m_display.makeTable({title(), runtime().points(), project().settings.readOnly}));
        return;
    }
    m_view = std::make_unique<LineView>(peer(), m_options.json, m_display.everyChange);
    m_input = std::make_unique<streams::LineInput>(STDIN_FILENO, carryOutLine, [this] {
        m_hasFailed = true;
        m_view->message(QStringLiteral("a line of more than %1 KiB is left out, to its end")
                            .arg(streams::kLongestInputLine / 1024));
    });
}

QString RunCommand::title() const
{
    return project().settings.readOnly ? project().name + QStringLiteral(" (read-only)")
                                       : project().name;
}

void RunCommand::aboutToEnd()
{
    m_view->refresh(runtime(), link().now());
}

void RunCommand::ended()
{
    m_view->end(runtime(), link().now());
}

void RunCommand::requestSettled()
{
    m_view->valuesRead(runtime(), link().now());
}

void RunCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    m_view->linkChanged(state, reason, retryDelay);
}

void RunCommand::requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                                 const QByteArray& reply)
{
    if (answer.kind == host::Answer::Abandoned)
        m_view->message(QStringLiteral("refused: ") + host::replyText(request, reply, answer));
}

void RunCommand::valueRefused(int row)
{
    const host::ValueTable& values = runtime().values();
    m_view->valueRefused(values.point(row), values.refusalStatus(row));
}

void RunCommand::valueGivenAgain(int row)
{
    m_view->message(
        QStringLiteral("the PLC gives %1 again").arg(runtime().values().point(row).text));
}

void RunCommand::carryOut(const QString& line)
{
    if (isEnding())
        return;
    const QString text = line.trimmed();
    const QString name = text.section(QLatin1Char(' '), 0, 0);
    const QString rest = text.section(QLatin1Char(' '), 1).trimmed();
    if (name == QLatin1String("write"))
        write(rest);
    else if (name == QLatin1String("station"))
        switchStation(rest.section(QLatin1Char(' '), 0, 0),
                      rest.section(QLatin1Char(' '), 1).trimmed());
    else if (name == QLatin1String("quit"))
        end(kExitDone);
    else if (!name.isEmpty())
        m_view->message(QStringLiteral("%1 is no command; there are write LABEL=VALUE, "
                                       "station N off|on, quit")
                            .arg(values::quoted(name)));
}

void RunCommand::write(const QString& text)
{
    const Expected<Assignment> parsed = parseAssignment(runtime().points(), text);
    if (!parsed) {
        m_hasFailed = true;
        m_view->message(parsed.error().text);
        return;
    }
    const Assignment& assignment = *parsed;
    runtime().write(assignment.point, assignment.values, link().now(),
                    [this, assignment](const host::TransferOutcome& outcome) {
                        m_hasFailed = m_hasFailed || !outcome.isDone();
                        m_view->writeSettled(assignment, outcome);
                        settled();
                    });
    link().pump();
}

void RunCommand::switchStation(const QString& station, const QString& state)
{
    bool ok = false;
    const int number = station.toInt(&ok, 10);
    const bool on = state == QLatin1String("on");
    if (!ok || number < 0 || (!on && state != QLatin1String("off"))) {
        m_view->message(QStringLiteral("station N off or station N on is expected"));
        return;
    }
    runtime().switchStation(number, on, link().now());
    link().pump();
    m_view->message(QStringLiteral("station %1 is switched %2").arg(number).arg(state));
}

} // namespace plc::cli
