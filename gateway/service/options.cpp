#include "gateway/service/options.h"

#include "gateway/config/settings.h"
#include "options/command_line.h"
#include "options/help_text.h"
#include "options/readers.h"

namespace plc::gateway {
namespace {

constexpr char kUsage[] =
    "usage: plc-gateway [OPTION...] CONFIG\n"
    "       plc-gateway status [--json] CONFIG\n"
    "       plc-gateway split [--devices N] [--replace] PATTERN LIST FOLDER\n"
    "\n"
    "Brings the values of PLCs to a message broker, by MQTT, as the configuration file\n"
    "CONFIG says. Runs until SIGTERM or Ctrl-C; SIGHUP has it read the configuration\n"
    "again. \"status\" tells how the gateway does that runs with this configuration.\n"
    "\"split\" divides the PLCs of a CSV file LIST between configurations, which it writes\n"
    "into FOLDER; PATTERN is a configuration with one device, made for all of them.\n"
    "\n"
    "Options:\n";

/// A command and its files.
Expected<void> takeArguments(QStringList arguments, Options* options)
{
    options->wantsStatus = arguments.value(0) == QLatin1String("status");
    options->wantsSplit = arguments.value(0) == QLatin1String("split");
    if (options->wantsStatus || options->wantsSplit)
        arguments.removeFirst();
    if (options->wantsSplit) {
        if (arguments.size() != 3)
            return Error{QStringLiteral(
                "split expects a configuration, a list and a folder; --help tells more")};
        options->split.pattern = arguments[0];
        options->split.list = arguments[1];
        options->split.folder = arguments[2];
        return {};
    }
    if (arguments.size() != 1)
        return Error{QStringLiteral("expected one configuration file; --help tells more")};
    options->configuration = arguments.first();
    return {};
}

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
               {"--devices N", "PLCs of one configuration at most (50)",
                integer(&split.devices, 1, kMostDevices), kCompleteNothing,
                "PLCs of one configuration at most, for `split`; 50 if not given. With another "
                "number than before, PLCs go to other configurations."},
               {"--replace", "let split replace configurations that have another content",
                flag(&split.replaces), kCompleteNothing,
                "Let `split` replace configurations that are there with another content, which it "
                "names; without this option they are an error, and nothing is written."},
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
    options.information = options::informationText(*line, QStringLiteral("plc-gateway"),
                                                   QString::fromLatin1(kUsage), table);
    if (!options.information.isEmpty())
        return options;
    if (const Expected<void> isGood = takeArguments(line->arguments(), &options); !isGood)
        return isGood.error();
    if (const Expected<void> isGood = line->read(table); !isGood)
        return isGood.error();
    return options;
}

} // namespace plc::gateway
