#include "cli/watch_command.h"

#include "cli/line_view.h"
#include "cli/value_lines.h"
#include "cli/watch_view.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {

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
    const bool everyChange = options().interval == 0;
    return std::make_unique<LineView>(peer(), options().json, everyChange);
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
