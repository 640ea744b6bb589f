#include "cli/resolve_command.h"

#include "cli/console.h"
#include "cli/point_text.h"
#include "project/label_syntax.h"

namespace plc::cli {
namespace {

int resolveLabels(const ResolveOptions& options, const CommandContext& context)
{
    QStringList labels;
    for (const QString& text : context.arguments)
        labels.append(project::takeCountOff(text).label);
    const host::DataPointFinder points = finderFor(context, labels);
    int code = kExitDone;
    for (const QString& text : context.arguments) {
        const Expected<host::DataPoint> point = points.find(text);
        if (point) {
            printPoint(point->text, *point, options.json);
        } else {
            complain(point.error().text);
            code = kExitUsage;
        }
    }
    return code;
}

int resolve(const ResolveOptions& options)
{
    return inContext(
        options, [&](const CommandContext& context) { return resolveLabels(options, context); });
}

} // namespace

const Command kResolveCommand = {"resolve",
                                 {"LABEL...", 1, kAnyNumber, "at least one label", kCompleteLabel},
                                 "show type, area and address of these labels",
                                 {kLabelNote},
                                 makeOptions<ResolveOptions>,
                                 execute<ResolveOptions, resolve>};

options::Table ResolveOptions::table()
{
    return options::Table{labelFileOption(&labelFile)} + ProjectOptions::table();
}

} // namespace plc::cli
