#include "cli/point_text.h"

#include "cli/console.h"
#include "cli/value_lines.h"
#include "host/points/symbol_list.h"
#include "project/symbol_selection.h"

namespace plc::cli {
namespace {

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

} // namespace

QString typeText(const host::DataPoint& point)
{
    const QString name = QString::fromLatin1(point.type->name);
    return values::isText(*point.type) ? QStringLiteral("%1(%2)").arg(name).arg(point.stringLength)
                                       : name;
}

void printPoint(const QString& label, const host::DataPoint& point, bool json)
{
    print(json ? describeJson(label, point) : describe(label, point));
}

namespace {

/// The driver gets no other symbols than these.
host::DataPointFinder finderOf(const project::Symbols& known, const CommandContext& context)
{
    QList<Label_Type_Info> symbols = host::symbolList(known);
    context.driver.passVarName2(&symbols);
    return host::DataPointFinder(context.project, context.runtimeSettings(), context.driver);
}

} // namespace

host::DataPointFinder finderFor(const CommandContext& context)
{
    return finderOf(context.project, context);
}

host::DataPointFinder finderFor(const CommandContext& context, const QStringList& labels)
{
    return finderOf(project::symbolsFor(labels, context.project), context);
}

} // namespace plc::cli
