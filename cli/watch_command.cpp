#include "cli/watch_command.h"

#include "cli/line_view.h"
#include "cli/value_lines.h"
#include "cli/watch_view.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {
namespace {

const char kScreenNote[] =
    "On a terminal it shows a table, whose key ? lists the keys. Otherwise it prints\n"
    "a line with the time for each change.";

int watch(const WatchOptions& options)
{
    return inContext(options, [&](const CommandContext& context) {
        return WatchCommand(options, context).execute();
    });
}

} // namespace

const Command kWatchCommand = {
    "watch",
    {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
    "show the project's cyclic labels, or these, with trend, minimum and maximum; keys sort, "
    "filter and write",
    {kScreenNote, kLabelNote, kPatternNote, kDurationNote},
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

std::unique_ptr<RunView> WatchCommand::screenView(const CarryOut& carryOut)
{
    const WatchState::Check check = [this](const QString& assignment) {
        return this->check(assignment);
    };
    auto view = std::make_unique<WatchView>(title(), peer(), carryOut, check);
    if (project().settings.readOnly)
        view->refuseWrites(host::readOnlyText());
    return view;
}

std::unique_ptr<RunView> WatchCommand::lineView()
{
    const bool everyChange = m_options.interval == 0;
    return std::make_unique<LineView>(peer(), m_options.json, everyChange);
}

WatchState::Checked WatchCommand::check(const QString& text)
{
    WatchState::Checked checked;
    const std::optional<Assignment> assignment =
        parseAssignment(runtime().points(), text, &checked.obstacle);
    if (!assignment)
        return checked;
    checked.value = host::pointText(assignment->point, assignment->values);
    checked.unit = unitText(assignment->point);
    return checked;
}

} // namespace plc::cli
