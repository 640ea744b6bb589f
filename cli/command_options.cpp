#include "cli/command_options.h"

#include <limits>

#include "options/command_line.h"
#include "options/readers.h"
#include "project/setting_limits.h"

namespace plc::cli {
namespace {

constexpr double kLongestRun = std::numeric_limits<int>::max(); // ms

} // namespace

options::Table CommandOptions::table()
{
    return options::informationOptions(&wantsHelp, &wantsVersion);
}

options::Table ProjectOptions::table()
{
    return options::Table{
               {"-p, --project FILE", "project file; if not given, what PLC_PROJECT names",
                options::text(&projectFile), options::kCompleteProject, "Project file."},
               {"--driver FILE",
                "driver library; if not given, what PLC_DRIVER names, or else the nearest one",
                options::text(&driverFile), options::kCompleteFile,
                "Driver library, built for the Qt of this program."},
               {"--json", "print one JSON object per line", options::flag(&json)},
           } +
           CommandOptions::table();
}

options::Table LinkOptions::table()
{
    return options::Table{
               {"--address HOST", "connect to this host instead of the project's address",
                options::text(&address), options::kCompleteHost},
               {"--port N", "connect to this port instead of the project's",
                options::integer(&port, 1, project::kHighestPort)},
               {"--timeout DURATION", "time limit for the connection and for each whole reply",
                options::milliseconds(&timeout,
                                      {options::kMillisecond, options::kAboveZero, kLongestTime})},
               {"--read-only", "refuse every write, as the project's setting readOnly does",
                options::flag(&readOnly), options::kCompleteNothing,
                "Refuse every write before anything is sent, as the project's setting `readOnly` "
                "does: `write` ends with exit status 2, `run` refuses each write of its input, "
                "and `watch` asks for no value."},
               {"--trace", "print every frame with its meaning on the standard error",
                options::flag(&trace), options::kCompleteNothing,
                "Print every frame with its time and its meaning on the standard error output."},
               {"--capture FILE",
                "record what is sent and received in FILE, for Wireshark (pcapng)",
                options::text(&captureFile), options::kCompleteFile,
                "Record what is sent and received in `FILE`, in the pcapng format that Wireshark "
                "opens. The addresses, ports, bytes and times are those of the session; "
                "the packets around them are made up. Each connection is in it from its opening to "
                "its end, as it was. When the disk is full the file ends with a whole packet, and "
                "the exit status is 1. A file that exists is an error."},
               {"--force", "replace the file of --capture if it exists", options::flag(&force),
                options::kCompleteNothing, "Replace the file of `--capture` if it exists."},
           } +
           ProjectOptions::table();
}

Expected<void> LinkOptions::check()
{
    if (force && captureFile.isEmpty())
        return Error{QStringLiteral("--force goes with --capture")};
    return {};
}

void LinkOptions::applyTo(project::Project* project) const
{
    if (!address.isEmpty())
        project->address = address;
    if (port != 0)
        project->port = quint16(port);
    project->settings.readOnly = project->settings.readOnly || readOnly;
    if (timeout != 0) {
        project->settings.connectTimeout = timeout;
        project->settings.replyTimeout = timeout;
    }
}

options::Table CyclicOptions::table()
{
    return options::Table{
               labelFileOption(&labelFile),
               {"--for DURATION", "end after this time",
                options::milliseconds(&duration,
                                      {options::kSecond, options::kAboveZero, kLongestRun})},
               {"--cycle DURATION",
                "shortest time from one pass over all values to the next (100ms)",
                options::milliseconds(&cycleTime, {options::kMillisecond, 0, kLongestTime}),
                options::kCompleteNothing,
                "Shortest time from one pass over all values to the next; 100ms if not given."},
               {"--station-off N", "start with station N switched off; may be repeated",
                options::integers(&stationsOff, 0, project::kHighestStation),
                options::kCompleteNothing, "Start with station `N` switched off; may be repeated."},
           } +
           LinkOptions::table();
}

options::Option labelFileOption(QString* labelFile)
{
    return {"--labels FILE", "take further labels from the first column of this CSV file",
            options::text(labelFile), options::kCompleteCsvFile,
            "Take further labels from the first column of this CSV file. Its first line may name "
            "the columns. A label with a comma stands in double quotes."};
}

options::Option intervalOption(int* interval, const char* help, const char* manual)
{
    return {
        "--interval DURATION", help,
        options::milliseconds(interval, {options::kMillisecond, options::kAboveZero, kLongestTime}),
        options::kCompleteNothing, manual};
}

options::Option csvOption(bool* csv)
{
    return {"--csv", "print comma-separated values with a header line", options::flag(csv)};
}

Error csvAndJson()
{
    return Error{QStringLiteral("--csv and --json are two different forms; give one")};
}

} // namespace plc::cli
