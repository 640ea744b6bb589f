#include "host/cli/watch_command.h"

#include "host/cli/line_view.h"
#include "host/cli/watch_view.h"

namespace plc {

std::unique_ptr<RunView> WatchCommand::screenView(const CarryOut& carryOut)
{
    const WatchState::Check check = [this](const QString& assignment) {
        return whyNotWritable(assignment);
    };
    return std::make_unique<WatchView>(project().name, peer(), carryOut, check);
}

std::unique_ptr<RunView> WatchCommand::lineView()
{
    const bool everyChange = options().interval == 0;
    return std::make_unique<LineView>(peer(), options().json, everyChange);
}

QString WatchCommand::whyNotWritable(const QString& assignment)
{
    QString error;
    return parseAssignment(runtime().points(), assignment, &error) ? QString() : error;
}

} // namespace plc
