#include "cli/help.h"

#include "cli/commands.h"
#include "options/command_line.h"
#include "options/help_text.h"

namespace plc::cli {
namespace {

constexpr char kExitCodes[] =
    "Exit codes: 0 done; 1 the PLC refused, the link failed, a write was not done, or\n"
    "output could not be written; 2 wrong usage or project file.";

QString usage(const Command& command)
{
    return QStringLiteral("plc %1 %2")
        .arg(QLatin1String(command.name), QLatin1String(command.arguments.usage));
}

} // namespace

QString programHelp()
{
    QString text = QStringLiteral(
        "plc exchanges data with a PLC through the driver library.\n"
        "\n");
    for (const Command* command : allCommands()) {
        text += options::helpItem(usage(*command), QString::fromUtf8(command->summary)) +
                QLatin1Char('\n');
    }
    text += QStringLiteral(
        "\n"
        "plc COMMAND --help tells the options of one command. Options of all commands\n"
        "(of import the last two only):\n");
    text += options::helpText(ProjectOptions().table());
    return text + QLatin1Char('\n') + QLatin1String(kExitCodes);
}

QString commandHelp(const Command& command)
{
    QString text = QStringLiteral("usage: plc %1 [OPTION...] %2\n\n")
                       .arg(QLatin1String(command.name), QLatin1String(command.arguments.usage));
    text += options::paragraph(options::sentence(command.summary)) +
            QStringLiteral("\n\nOptions:\n") + options::helpText(command.makeOptions()->table());
    for (const char* note : command.notes) {
        if (note)
            text += QLatin1Char('\n') + QString::fromUtf8(note) + QLatin1Char('\n');
    }
    return text.trimmed();
}

} // namespace plc::cli
