#include "cli/command_context.h"

#include <QtCore/QCoreApplication>

#include "cli/console.h"
#include "cli/label_file.h"

namespace plc::cli {
namespace {

Expected<CommandContext> openContext(const ProjectOptions& options)
{
    const Expected<project::Project> project = project::loadProject(options.projectFile);
    if (!project)
        return project.error();
    CommandContext context{*project, {}, options.arguments};
    const QString labelFile = options.fileOfArguments();
    if (!labelFile.isEmpty()) {
        const Expected<QStringList> labels = readLabels(labelFile, context.project);
        if (!labels)
            return labels.error();
        context.arguments += *labels;
    }
    options.applyTo(&context.project);
    const Expected<QString> library =
        host::findDriver(options.driverFile, QCoreApplication::applicationDirPath());
    if (!library)
        return library.error();
    const Expected<host::DriverLibrary> driver = host::DriverLibrary::load(*library);
    if (!driver)
        return driver.error();
    context.driver = driver->functions();
    return context;
}

} // namespace

int inContext(const ProjectOptions& options,
              const std::function<int(const CommandContext& context)>& carryOut)
{
    const Expected<CommandContext> context = openContext(options);
    return context ? carryOut(*context) : usageError(context.error());
}

int withDriver(
    const ProjectOptions& options,
    const std::function<int(const CommandContext& context, host::DriverClaim driver)>& carryOut)
{
    return inContext(options, [&](const CommandContext& context) {
        Expected<host::DriverClaim> driver = host::DriverClaim::take(context.driver);
        return driver ? carryOut(context, std::move(*driver)) : usageError(driver.error());
    });
}

int usageError(const Error& error)
{
    complain(error.text);
    return kExitUsage;
}

} // namespace plc::cli
