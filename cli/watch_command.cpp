#include "cli/watch_command.h"

#include "cli/run_command.h"
#include "cli/value_lines.h"
#include "cli/watch_table.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {
namespace {

constexpr char kScreenNote[] =
    "On a terminal it shows a table, whose key ? lists the keys. Otherwise it prints\n"
    "a line with the time for each change.";

WatchState::Checked check(const host::DataPointFinder& points, const QString& text)
{
    WatchState::Checked checked;
    const Expected<Assignment> assignment = parseAssignment(points, text);
    if (!assignment) {
        checked.obstacle = assignment.error().text;
        return checked;
    }
    checked.value = host::pointText(assignment->point, assignment->values);
    checked.unit = unitText(assignment->point);
    return checked;
}

std::unique_ptr<TerminalTable> makeTable(const TableContext& context)
{
    const host::DataPointFinder& points = context.points;
    auto table = std::make_unique<WatchTable>(
        context.title, [&points](const QString& assignment) { return check(points, assignment); });
    if (context.isReadOnly)
        table->refuseWrites(host::readOnlyText());
    return table;
}

int watch(const WatchOptions& options)
{
    const RunDisplay display{options.interval, makeTable, options.interval == 0};
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return RunCommand(options, display, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kWatchCommand = {
    "watch",
    {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
    "show the project's cyclic labels, or these, with trend, minimum and maximum; keys sort, "
    "filter and write",
    {kScreenNote, kLabelNote, kPatternNote, kCyclicDurationNote},
    makeOptions<WatchOptions>,
    execute<WatchOptions, watch>};

options::Table WatchOptions::table()
{
    return options::Table{intervalOption(
               &interval, "time between two screens (200ms) or two prints (else each change)",
               "Time between two screens, 200ms if not given, or two prints; if not given, each "
               "change is printed.")} +
           CyclicOptions::table();
}

} // namespace plc::cli
