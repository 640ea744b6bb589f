#include "cli/symbol_tree_text.h"

#include "cli/console.h"
#include "cli/value_lines.h"
#include "project/memory_layout.h"
#include "project/symbol_tree.h"

namespace plc::cli {
namespace {

bool isBitVariable(const project::Variable& variable)
{
    return variable.type && values::isBit(*variable.type);
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
    if (!node.variable)
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
    if (!node.variable)
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

} // namespace

void printTree(const project::Project& project, const QString& pattern, int depth, bool json)
{
    TreePrinter printer;
    project::walkSymbolTree(project, pattern, depth, [&](const project::SymbolNode& node) {
        if (json)
            print(nodeJson(node));
        else
            printer.add(node);
    });
}

} // namespace plc::cli
