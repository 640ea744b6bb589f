#include "cli/command_line.h"

#include "cli/commands.h"
#include "cli/help.h"
#include "options/command_line.h"
#include "options/help_text.h"
#include "values/nearest_name.h"

namespace plc::cli {
namespace {

Expected<const Command*> findCommand(const QStringList& arguments)
{
    const QString list = commandNames().join(QStringLiteral(", "));
    if (arguments.isEmpty())
        return Error{QStringLiteral("a command is expected: %1 (plc --help tells more)").arg(list)};
    for (const Command* command : allCommands()) {
        if (arguments.first() == QLatin1String(command->name))
            return command;
    }
    return Error{QStringLiteral("%1 is no command%2; there are %3")
                     .arg(values::quoted(arguments.first()),
                          values::nearestNameHint(arguments.first(), commandNames()), list)};
}

Expected<void> checkArguments(const Command& command, const CommandOptions& options)
{
    const int count = int(options.arguments.size());
    // A file of labels takes the place of all others.
    const int fewest = options.fileOfArguments().isEmpty() ? command.arguments.fewest : 0;
    if (count >= fewest && count <= command.arguments.most)
        return {};
    return Error{QStringLiteral("plc %1 takes %2")
                     .arg(QLatin1String(command.name), QLatin1String(command.arguments.expected))};
}

Expected<void> checkProject(const CommandOptions& options)
{
    if (options.lacksProject())
        return Error{QStringLiteral("no project file; give it with --project or in PLC_PROJECT")};
    return {};
}

/// Has the command's own options read and judged.
Expected<void> readOptions(const Command& command, const options::CommandLine& line,
                           CommandOptions* options)
{
    const options::Table table = options->table();
    const QStringList foreign = line.namesBeside(table);
    if (!foreign.isEmpty()) {
        return Error{QStringLiteral("--%1 is no option of plc %2")
                         .arg(foreign.first(), QLatin1String(command.name))};
    }
    options->arguments = line.arguments().mid(1);
    Expected<void> isGood = line.read(table);
    if (isGood)
        isGood = checkArguments(command, *options);
    if (isGood)
        isGood = options->check();
    return isGood ? checkProject(*options) : isGood;
}

} // namespace

Expected<Invocation> readCommandLine(const QStringList& arguments)
{
    const Expected<options::CommandLine> line =
        options::CommandLine::parse(arguments, allOptions());
    if (!line)
        return line.error();
    Invocation invocation;
    const bool wantsHelp = line->has(QStringLiteral("help"));
    if (!wantsHelp && line->has(QStringLiteral("version"))) {
        invocation.information = options::versionText(QStringLiteral("plc"));
        return invocation;
    }
    if (wantsHelp && line->arguments().isEmpty()) {
        invocation.information = programHelp();
        return invocation;
    }
    const Expected<const Command*> command = findCommand(line->arguments());
    if (!command)
        return command.error();
    if (wantsHelp) {
        invocation.information = commandHelp(**command);
        return invocation;
    }
    invocation.command = *command;
    invocation.options = invocation.command->makeOptions();
    if (const Expected<void> isGood =
            readOptions(*invocation.command, *line, invocation.options.get());
        !isGood)
        return isGood.error();
    return invocation;
}

} // namespace plc::cli
