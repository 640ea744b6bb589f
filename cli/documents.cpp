// Writes what the manual and the shell's completion have of the commands' options; runs while the
// program is built.

#include "cli/commands.h"
#include "options/completion_text.h"
#include "options/document.h"
#include "options/manual_text.h"

namespace plc::cli {
namespace {

/// Options that the same commands have.
struct Group {
    QVector<const Command*> commands;
    options::Table options;
};

/// Options of one name that tell different things in the manual are different ones.
bool isSame(const options::Option& one, const options::Option& other)
{
    const auto text = [](const options::Option& option) {
        return QString::fromUtf8(option.manual ? option.manual : option.help);
    };
    return one.name() == other.name() && text(one) == text(other);
}

QVector<const Command*> commandsWith(const options::Option& option)
{
    QVector<const Command*> commands;
    for (const Command* command : allCommands()) {
        const auto options = command->makeOptions();
        const options::Table table = options->table();
        const options::Option* found = options::findOption(table, option.name());
        if (found && isSame(*found, option))
            commands.append(command);
    }
    return commands;
}

void addToGroup(const options::Option& option, QVector<Group>* groups)
{
    const QVector<const Command*> commands = commandsWith(option);
    for (Group& group : *groups) {
        if (group.commands != commands)
            continue;
        for (const options::Option& other : group.options) {
            if (isSame(other, option))
                return;
        }
        group.options.append(option);
        return;
    }
    groups->append({commands, {option}});
}

/// Those of all commands first, then those of fewer and fewer.
QVector<Group> groupsOfOptions()
{
    QVector<Group> groups;
    for (const Command* command : allCommands()) {
        const auto options = command->makeOptions();
        for (const options::Option& option : options->table())
            addToGroup(option, &groups);
    }
    std::stable_sort(groups.begin(), groups.end(), [](const Group& one, const Group& other) {
        return one.commands.size() > other.commands.size();
    });
    return groups;
}

QString groupHeading(const Group& group)
{
    const int count = int(group.commands.size());
    if (count == int(allCommands().size()))
        return QStringLiteral(".Pp\nOptions for all commands:\n");
    QString text = QStringLiteral(".Pp\nOptions for\n");
    for (int i = 0; i < count; ++i) {
        const bool isLast = i + 1 == count;
        if (isLast && count > 1)
            text += QStringLiteral("and\n");
        text += QStringLiteral(".Cm %1 %2\n")
                    .arg(QLatin1String(group.commands[i]->name),
                         isLast ? QStringLiteral(":") : QStringLiteral(","));
    }
    // The one before "and" has no comma.
    return text.replace(QStringLiteral(" ,\nand\n"), QStringLiteral("\nand\n"));
}

QString manualOptions()
{
    QString text;
    for (const Group& group : groupsOfOptions())
        text += groupHeading(group) + options::manualList(group.options, commandNames());
    return text;
}

QString completionCommands()
{
    return QStringLiteral("    local commands='%1' command='' i\n")
        .arg(commandNames().join(QLatin1Char(' ')));
}

/// A branch for each command in a `case $command in`.
QString completionBranches(const std::function<QString(const Command&)>& action)
{
    QString text;
    for (const Command* command : allCommands()) {
        text += QStringLiteral("        %1)\n            %2\n            ;;\n")
                    .arg(QLatin1String(command->name), action(*command));
    }
    return text;
}

QString completionOptions()
{
    return completionBranches([](const Command& command) {
        return QStringLiteral("options='%1'")
            .arg(options::completionNames(command.makeOptions()->table()));
    });
}

QString completionArguments()
{
    return completionBranches(
        [](const Command& command) { return QString::fromLatin1(command.arguments.completion); });
}

QString commonOptions()
{
    return QStringLiteral("    local options='%1'\n")
        .arg(options::completionNames(ProjectOptions().table()));
}

QMap<QString, options::Sections> documents()
{
    return {{QStringLiteral("manual"), {{QStringLiteral("OPTIONS"), manualOptions()}}},
            {QStringLiteral("completion"),
             {{QStringLiteral("VALUES"), options::completionCases(allOptions(), 8)},
              {QStringLiteral("COMMANDS"), completionCommands()},
              {QStringLiteral("COMMON_OPTIONS"), commonOptions()},
              {QStringLiteral("OPTIONS"), completionOptions()},
              {QStringLiteral("ARGUMENTS"), completionArguments()}}}};
}

} // namespace
} // namespace plc::cli

int main(int argc, char** argv)
{
    return plc::options::writeDocument(argc, argv, plc::cli::documents());
}
