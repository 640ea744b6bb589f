#include <QtCore/QCoreApplication>

#include "cli/console.h"
#include "cli/diagnose_command.h"
#include "cli/import_command.h"
#include "cli/label_commands.h"
#include "cli/label_file.h"
#include "cli/log_command.h"
#include "cli/once_command.h"
#include "cli/options.h"
#include "cli/plan_command.h"
#include "cli/read_command.h"
#include "cli/run_command.h"
#include "cli/stats_command.h"
#include "cli/symbols_command.h"
#include "cli/watch_command.h"
#include "cli/write_command.h"
#include "streams/output_stream.h"

namespace plc::cli {
namespace {

void applyOverrides(const Options& options, project::Project* project)
{
    if (!options.address.isEmpty())
        project->address = options.address;
    if (options.port != 0)
        project->port = quint16(options.port);
    project->settings.readOnly = project->settings.readOnly || options.readOnly;
    if (options.timeout != 0) {
        project->settings.connectTimeout = options.timeout;
        project->settings.replyTimeout = options.timeout;
    }
}

int execute(const CommandContext& context)
{
    switch (context.options.command) {
        case Command::Run:
            return context.options.once ? OnceCommand(context).execute()
                                        : RunCommand(context).execute();
        case Command::Watch:
            return WatchCommand(context).execute();
        case Command::Log:
            return LogCommand(context).execute();
        case Command::Read:
            return ReadCommand(context).execute();
        case Command::Write:
            return WriteCommand(context).execute();
        case Command::Resolve:
            return resolveLabels(context);
        case Command::Symbols:
            return context.options.symbols.tree ? showTree(context) : listSymbols(context);
        case Command::Import:
            break; // Needs neither project nor driver.
        case Command::Plan:
            return planScan(context);
        case Command::Diagnose:
            return DiagnoseCommand(context).execute();
        case Command::Stats:
            return StatsCommand(context).execute();
    }
    return kExitUsage;
}

int usageError(const QString& error)
{
    complain(error);
    return kExitUsage;
}

int run(const QStringList& arguments)
{
    QString error;
    std::optional<Options> options = readOptions(arguments, &error);
    if (!options)
        return usageError(error);
    if (!options->information.isEmpty()) {
        printText(options->information);
        return kExitDone;
    }
    if (!options->log.exported.isEmpty())
        return exportDatabase(*options);
    if (options->command == Command::Import)
        return importSymbols(*options);
    if (options->symbols.check)
        return checkMemory(*options);
    std::optional<project::Project> project = project::loadProject(options->projectFile, &error);
    if (!project)
        return usageError(error);
    if (!options->labelFile.isEmpty() &&
        !appendLabels(options->labelFile, *project, &options->arguments, &error))
        return usageError(error);
    applyOverrides(*options, &*project);
    const QString library =
        host::findDriver(options->driverFile, QCoreApplication::applicationDirPath(), &error);
    if (library.isEmpty())
        return usageError(error);
    const std::optional<host::DriverFunctions> driver = host::loadDriver(library, &error);
    if (!driver)
        return usageError(error);
    return execute(CommandContext{*options, *project, *driver});
}

} // namespace
} // namespace plc::cli

int main(int argc, char** argv)
{
    plc::streams::secureStandardStreams();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plc"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PLC_VERSION));
    return plc::cli::finishOutput(plc::cli::run(QCoreApplication::arguments()));
}
