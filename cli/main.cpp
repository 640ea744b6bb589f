#include <QtCore/QCoreApplication>

#include "cli/command_context.h"
#include "cli/command_line.h"
#include "cli/console.h"
#include "streams/output_stream.h"

namespace plc::cli {
namespace {

int run(const QStringList& arguments)
{
    const Expected<Invocation> invocation = readCommandLine(arguments);
    if (!invocation)
        return usageError(invocation.error());
    if (!invocation->command) {
        printText(invocation->information);
        return kExitDone;
    }
    return invocation->command->execute(*invocation->options);
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
