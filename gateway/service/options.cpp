#include "gateway/service/options.h"

#include <QtCore/QCoreApplication>

#include "options/command_line.h"
#include "options/help_text.h"
#include "options/readers.h"

namespace plc::gateway {
namespace {

constexpr char kUsage[] =
    "usage: plc-gateway [OPTION...] CONFIG\n"
    "       plc-gateway status [--json] CONFIG\n"
    "\n"
    "Brings the values of PLCs to a message broker, by MQTT, as the configuration file\n"
    "CONFIG says. Runs until SIGTERM or Ctrl-C; SIGHUP has it read the configuration\n"
    "again. \"status\" tells how the gateway does that runs with this configuration.\n"
    "\n"
    "Options:\n";

} // namespace

options::Table Options::table()
{
    using namespace options;
    return Table{
               {"--check", "read the configuration and its projects, and tell what is wrong",
                flag(&checksOnly), kCompleteNothing,
                "Read the configuration and all projects, tell what is wrong or strange and how "
                "many values are published, and end without connecting anything."},
               {"--driver FILE", "the driver library (beside the program, or installed)",
                text(&driverFile), kCompleteFile,
                "The driver library; if not given, it is looked for beside the program and where "
                "it is installed."},
               {"--json", "print the status as JSON", flag(&isJson)},
           } +
           informationOptions(&m_wantsHelp, &m_wantsVersion);
}

Expected<Options> readOptions(const QStringList& words)
{
    Options options;
    const options::Table table = options.table();
    const Expected<options::CommandLine> line = options::CommandLine::parse(words, table);
    if (!line)
        return line.error();
    if (line->has(QStringLiteral("help"))) {
        options.information = (QString::fromLatin1(kUsage) + options::helpText(table)).trimmed();
        return options;
    }
    if (line->has(QStringLiteral("version"))) {
        options.information =
            QStringLiteral("plc-gateway ") + QCoreApplication::applicationVersion();
        return options;
    }
    QStringList arguments = line->arguments();
    options.wantsStatus = arguments.value(0) == QLatin1String("status");
    if (options.wantsStatus)
        arguments.removeFirst();
    if (arguments.size() != 1)
        return Error{QStringLiteral("expected one configuration file; --help tells more")};
    options.configuration = arguments.first();
    if (const Expected<void> isGood = line->read(table); !isGood)
        return isGood.error();
    return options;
}

} // namespace plc::gateway
