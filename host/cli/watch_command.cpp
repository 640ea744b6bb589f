#include "host/cli/watch_command.h"

#include "host/cli/line_view.h"
#include "host/cli/value_lines.h"
#include "host/cli/watch_view.h"
#include "host/result_text.h"
#include "host/value_codec.h"

namespace plc {

std::unique_ptr<RunView> WatchCommand::screenView(const CarryOut& carryOut)
{
    const WatchState::Check check = [this](const QString& assignment) {
        return this->check(assignment);
    };
    auto view = std::make_unique<WatchView>(title(), peer(), carryOut, check);
    if (project().settings.readOnly)
        view->refuseWrites(readOnlyText());
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
    checked.value = pointText(assignment->point, assignment->values);
    checked.unit = unitText(assignment->point);
    return checked;
}

} // namespace plc
