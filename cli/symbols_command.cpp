#include "cli/symbols_command.h"

#include "cli/value_lines.h"
#include "project/memory_layout.h"
#include "project/symbol_tree.h"

namespace plc::cli {
namespace {

constexpr int kMostOverlaps = 1000;

bool isBitVariable(const project::Variable& variable)
{
    return variable.type != nullptr && values::isBit(*variable.type);
}

/// "6 × 104 bytes"; of bits their number.
QString sizeText(const project::Variable& variable)
{
    const qint64 count = project::elementCount(variable);
    if (isBitVariable(variable))
        return count == 1 ? QStringLiteral("1 bit") : QStringLiteral("%1 bits").arg(count);
    const qint64 size = project::elementSize(variable);
    const QString bytes =
        size == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(size);
    return variable.dimensions.isEmpty() ? bytes : QStringLiteral("%1 × %2").arg(count).arg(bytes);
}

QString nodeText(const project::SymbolNode& node)
{
    if (node.variable == nullptr)
        return node.name.isEmpty() ? QStringLiteral("(global variables)") : node.name;
    const project::Variable& variable = *node.variable;
    QString text =
        QStringLiteral("%1: %2, %3, area %4 %5 %6")
            .arg(node.name, project::typeName(variable), sizeText(variable))
            .arg(node.area)
            .arg(isBitVariable(variable) ? QStringLiteral("bit") : QStringLiteral("address"))
            .arg(node.address);
    if (!variable.unit.isEmpty())
        text += QStringLiteral(", in ") + variable.unit;
    if (variable.overlay)
        text += QStringLiteral(", overlay");
    return variable.description.isEmpty() ? text
                                          : text + QStringLiteral(", ") + variable.description;
}

QString nodeJson(const project::SymbolNode& node)
{
    JsonLine line;
    line.add("level", qint64(node.level));
    line.add("label", node.label);
    if (node.variable == nullptr)
        return line.text();
    const project::Variable& variable = *node.variable;
    line.add("type", project::typeName(variable));
    line.add("elements", project::elementCount(variable));
    if (!isBitVariable(variable))
        line.add("size", project::elementSize(variable));
    line.add("area", qint64(node.area));
    line.add(isBitVariable(variable) ? "bit" : "address", node.address);
    if (!variable.unit.isEmpty())
        line.add("unit", variable.unit);
    if (!variable.description.isEmpty())
        line.add("description", variable.description);
    if (variable.overlay)
        line.addFlag("overlay", true);
    return line.text();
}

/// Draws the branches before the nodes as they come.
class TreePrinter {
public:
    void add(const project::SymbolNode& node)
    {
        // A scope stands at the root, and what it is made of one level below without an indent.
        if (node.level == 1) {
            m_indents = QStringList{QString()};
            print(nodeText(node));
            return;
        }
        m_indents = m_indents.mid(0, node.level - 1);
        print(m_indents.last() + (node.isLast ? QStringLiteral("└─ ") : QStringLiteral("├─ ")) +
              nodeText(node));
        m_indents.append(m_indents.last() +
                         (node.isLast ? QStringLiteral("   ") : QStringLiteral("│  ")));
    }

private:
    QStringList m_indents; ///< Before the nodes of level 2, 3 and so on.
};

/// All variables of a project, with their labels.
struct PlacedVariables {
    QVector<project::Variable> variables;
    QStringList labels;
};

PlacedVariables variablesOf(const project::Project& project)
{
    PlacedVariables all;
    for (const project::ScopeDefinition& scope : project.scopes) {
        for (const project::Variable& variable : scope.variables) {
            all.variables.append(variable);
            all.labels.append(scope.name + QLatin1Char('.') + variable.name);
        }
    }
    return all;
}

QString overlapText(const PlacedVariables& all, const project::SharedMemory& shared, bool isWanted)
{
    return QStringLiteral("area %1: %2 and %3 share byte %4%5")
        .arg(all.variables[shared.first].area)
        .arg(all.labels[shared.first], all.labels[shared.second])
        .arg(shared.byte)
        .arg(isWanted ? QStringLiteral(", as an overlay") : QString());
}

QString overlapJson(const PlacedVariables& all, const project::SharedMemory& shared, bool isWanted)
{
    JsonLine line;
    line.add("found", QStringLiteral("overlap"));
    line.add("area", qint64(all.variables[shared.first].area));
    line.add("byte", shared.byte);
    line.add("first", all.labels[shared.first]);
    line.add("second", all.labels[shared.second]);
    line.addFlag("overlay", isWanted);
    return line.text();
}

QString gapText(const project::MemoryGap& gap)
{
    return QStringLiteral("area %1: %2 free from %3 to %4")
        .arg(gap.area)
        .arg(gap.end - gap.first == 1 ? QStringLiteral("1 byte")
                                      : QStringLiteral("%1 bytes").arg(gap.end - gap.first))
        .arg(gap.first)
        .arg(gap.end - 1);
}

QString gapJson(const project::MemoryGap& gap)
{
    JsonLine line;
    line.add("found", QStringLiteral("gap"));
    line.add("area", qint64(gap.area));
    line.add("first", gap.first);
    line.add("bytes", gap.end - gap.first);
    return line.text();
}

/// Returns how many overlaps nobody wants.
int printOverlaps(const PlacedVariables& all, bool json)
{
    const QVector<project::SharedMemory> overlaps =
        project::allSharedMemory(all.variables, kMostOverlaps);
    int unwanted = 0;
    for (const project::SharedMemory& shared : overlaps) {
        const bool isWanted =
            all.variables[shared.first].overlay || all.variables[shared.second].overlay;
        print(json ? overlapJson(all, shared, isWanted) : overlapText(all, shared, isWanted));
        unwanted += isWanted ? 0 : 1;
    }
    if (int(overlaps.size()) == kMostOverlaps)
        complain(QStringLiteral("there may be more than these %1 overlaps").arg(kMostOverlaps));
    return unwanted;
}

} // namespace

int showTree(const CommandContext& context)
{
    const Options& options = context.options;
    TreePrinter printer;
    project::walkSymbolTree(context.project, options.arguments.value(0), options.symbols.depth,
                            [&](const project::SymbolNode& node) {
                                if (options.json)
                                    print(nodeJson(node));
                                else
                                    printer.add(node);
                            });
    return kExitDone;
}

int checkMemory(const Options& options)
{
    QString error;
    const std::optional<project::Project> project =
        project::loadProject(options.projectFile, &error, project::SharedMemoryRule::Allowed);
    if (!project) {
        complain(error);
        return kExitUsage;
    }
    const PlacedVariables all = variablesOf(*project);
    const int unwanted = printOverlaps(all, options.json);
    for (const project::MemoryGap& gap :
         project::memoryGaps(all.variables, project->areas, options.symbols.gap))
        print(options.json ? gapJson(gap) : gapText(gap));
    if (unwanted == 0)
        return kExitDone;
    complain(QStringLiteral("variables share memory at %1; move one of each two, or mark the one "
                            "that lies there on purpose with \"overlay\": true")
                 .arg(unwanted == 1 ? QStringLiteral("1 place")
                                    : QStringLiteral("%1 places").arg(unwanted)));
    return kExitRefused;
}

} // namespace plc::cli
