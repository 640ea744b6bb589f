#include "cli/commands.h"

#include "cli/diagnose_command.h"
#include "cli/import_command.h"
#include "cli/log_command.h"
#include "cli/plan_command.h"
#include "cli/read_command.h"
#include "cli/resolve_command.h"
#include "cli/run_command.h"
#include "cli/stats_command.h"
#include "cli/symbols_command.h"
#include "cli/watch_command.h"
#include "cli/write_command.h"

namespace plc::cli {

const QVector<const Command*>& allCommands()
{
    static const QVector<const Command*> commands{
        &kRunCommand,   &kWatchCommand,    &kLogCommand,     &kReadCommand,
        &kWriteCommand, &kResolveCommand,  &kSymbolsCommand, &kImportCommand,
        &kPlanCommand,  &kDiagnoseCommand, &kStatsCommand};
    return commands;
}

QStringList commandNames()
{
    QStringList names;
    for (const Command* command : allCommands())
        names.append(QString::fromLatin1(command->name));
    return names;
}

options::Table allOptions()
{
    options::Table all;
    for (const Command* command : allCommands())
        options::addNew(command->makeOptions()->table(), &all);
    for (options::Option& option : all)
        option.read = nullptr;
    return all;
}

} // namespace plc::cli
