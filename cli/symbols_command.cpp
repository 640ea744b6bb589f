#include "cli/symbols_command.h"

#include "cli/console.h"
#include "cli/memory_check.h"
#include "cli/point_text.h"
#include "cli/symbol_tree_text.h"
#include "options/readers.h"
#include "project/label_pattern.h"
#include "project/memory_layout.h"
#include "project/symbol_walk.h"
#include "values/csv.h"

namespace plc::cli {
namespace {

/// Bytes of all elements; nothing for a BIT, which has none of its own.
QString bytesText(const project::Variable& variable)
{
    if (values::isBit(*variable.type))
        return {};
    return QString::number((project::elementCount(variable) - 1) *
                               project::elementStride(variable) +
                           project::elementSize(variable));
}

QStringList csvFields(const project::SymbolEntry& entry, const host::DataPoint& point)
{
    return {entry.pattern,
            typeText(point),
            QString::number(point.area),
            QString::number(point.address),
            bytesText(*entry.variable),
            point.unit,
            point.description};
}

int listSymbols(const SymbolsOptions& options, const CommandContext& context)
{
    const host::DataPointFinder points = finderFor(context);
    const project::LabelPattern pattern(context.arguments.value(0),
                                        project::LabelPattern::Place::Inside);
    if (options.csv)
        printRow({QStringLiteral("label"), QStringLiteral("type"), QStringLiteral("area"),
                  QStringLiteral("address"), QStringLiteral("size"), QStringLiteral("unit"),
                  QStringLiteral("description")});
    for (const project::SymbolEntry& entry : project::symbolEntries(context.project)) {
        if (!pattern.matches(entry.pattern))
            continue;
        const Expected<host::DataPoint> point = points.find(entry.firstLabel);
        if (!point) {
            complain(point.error().text);
            return kExitUsage;
        }
        if (options.csv)
            printRow(csvFields(entry, *point));
        else
            printPoint(entry.pattern, *point, options.json);
    }
    return kExitDone;
}

int showSymbols(const SymbolsOptions& options)
{
    if (options.memoryCheck)
        return checkMemory(options.projectFile, options.gap.value_or(1), options.json);
    return inContext(options, [&](const CommandContext& context) {
        if (!options.tree)
            return listSymbols(options, context);
        printTree(context.project, context.arguments.value(0), options.depth.value_or(0),
                  options.json);
        return int(kExitDone);
    });
}

} // namespace

const Command kSymbolsCommand = {
    "symbols",
    {"[PATTERN]", 0, 1, "at most one pattern", kCompleteLabel},
    "list the project's variables; PATTERN, which may have * and ?, is found anywhere in their "
    "labels",
    {},
    makeOptions<SymbolsOptions>,
    execute<SymbolsOptions, showSymbols>};

options::Table SymbolsOptions::table()
{
    using namespace options;
    constexpr int kHighestNumber = std::numeric_limits<int>::max();
    return Table{
               csvOption(&csv),
               {"--tree", "show scopes, structures and members as a tree", flag(&tree),
                kCompleteNothing,
                "Show scopes, structures and members as a tree, with sizes and addresses."},
               {"--depth N", "levels of the tree: 1 scopes, 2 variables, 3 members, and so on",
                integer(&depth, 1, kHighestNumber), kCompleteNothing,
                "Levels of the tree: 1 shows scopes, 2 variables, 3 members, and so on."},
               {"--check", "list variables that share memory, and gaps between variables",
                flag(&memoryCheck), kCompleteNothing,
                "List variables that share memory, and gaps between variables. The exit status is "
                "1 if two share memory and neither is marked as an overlay."},
               {"--gap BYTES", "list gaps of at least this many bytes (1)",
                integer(&gap, 1, kHighestNumber), kCompleteNothing,
                "List gaps of at least this many bytes; 1 if not given."},
           } +
           ProjectOptions::table();
}

Expected<void> SymbolsOptions::check()
{
    if (depth && !tree)
        return Error{QStringLiteral("--depth goes with --tree")};
    if (gap && !memoryCheck)
        return Error{QStringLiteral("--gap goes with --check")};
    if (tree && memoryCheck)
        return Error{QStringLiteral("--tree and --check are two different lists; give one")};
    if (csv && (tree || memoryCheck))
        return Error{QStringLiteral("--csv is for the plain list; leave out --tree, --check")};
    if (memoryCheck && !arguments.isEmpty())
        return Error{QStringLiteral("--check takes all of the project; leave out the pattern")};
    if (csv && json)
        return csvAndJson();
    return {};
}

} // namespace plc::cli
