#include "cli/label_commands.h"

#include "cli/value_lines.h"
#include "host/points/symbol_list.h"
#include "project/label_pattern.h"
#include "project/memory_layout.h"
#include "project/symbol_walk.h"
#include "values/csv.h"

namespace plc::cli {
namespace {

QString typeText(const host::DataPoint& point)
{
    const QString name = QString::fromLatin1(point.type->name);
    return values::isText(*point.type) ? QStringLiteral("%1(%2)").arg(name).arg(point.stringLength)
                                       : name;
}

/// "LABEL: TYPE, area 3 address 10, in rpm, Description"
QString describe(const QString& label, const host::DataPoint& point)
{
    QString line = QStringLiteral("%1: %2, %3").arg(label, typeText(point), addressText(point));
    if (!point.unit.isEmpty())
        line += QStringLiteral(", in ") + point.unit;
    return point.description.isEmpty() ? line : line + QStringLiteral(", ") + point.description;
}

QString describeJson(const QString& label, const host::DataPoint& point)
{
    JsonLine line;
    line.add("label", label);
    line.add("type", QString::fromLatin1(point.type->name));
    if (values::isText(*point.type))
        line.add("length", qint64(point.stringLength));
    line.add("code", qint64(point.type->code));
    line.add("area", qint64(point.area));
    line.add(values::isBit(*point.type) ? "bit" : "address", qint64(point.address));
    if (!point.unit.isEmpty())
        line.add("unit", point.unit);
    if (!point.description.isEmpty())
        line.add("description", point.description);
    return line.text();
}

/// Bytes of all elements; nothing for a BIT, which has none of its own.
QString sizeText(const project::Variable& variable)
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
            sizeText(*entry.variable),
            point.unit,
            point.description};
}

void printPoint(const CommandContext& context, const QString& label, const host::DataPoint& point)
{
    print(context.options.json ? describeJson(label, point) : describe(label, point));
}

host::DataPointFinder finderFor(const CommandContext& context)
{
    QList<Label_Type_Info> symbols = host::symbolList(context.project);
    context.driver.passVarName2(&symbols);
    return host::DataPointFinder(context.project, context.runtimeSettings(), context.driver);
}

} // namespace

int resolveLabels(const CommandContext& context)
{
    const host::DataPointFinder points = finderFor(context);
    int code = kExitDone;
    for (const QString& text : context.options.arguments) {
        QString error;
        const std::optional<host::DataPoint> point = points.find(text, &error);
        if (point) {
            printPoint(context, point->text, *point);
        } else {
            complain(error);
            code = kExitUsage;
        }
    }
    return code;
}

int listSymbols(const CommandContext& context)
{
    const host::DataPointFinder points = finderFor(context);
    const project::LabelPattern pattern(context.options.arguments.value(0),
                                        project::LabelPattern::Place::Inside);
    if (context.options.csv)
        printRow({QStringLiteral("label"), QStringLiteral("type"), QStringLiteral("area"),
                  QStringLiteral("address"), QStringLiteral("size"), QStringLiteral("unit"),
                  QStringLiteral("description")});
    for (const project::SymbolEntry& entry : project::symbolEntries(context.project)) {
        if (!pattern.matches(entry.pattern))
            continue;
        QString error;
        const std::optional<host::DataPoint> point = points.find(entry.firstLabel, &error);
        if (!point) {
            complain(error);
            return kExitUsage;
        }
        if (context.options.csv)
            printRow(csvFields(entry, *point));
        else
            printPoint(context, entry.pattern, *point);
    }
    return kExitDone;
}

} // namespace plc::cli
