#include "host/symbol_tree.h"

#include <limits>

#include "host/project/iec_types.h"
#include "host/symbol_walk.h"

namespace plc {
namespace {

/// Builds the nodes that match, and those above them.
class TreeBuilder {
public:
    TreeBuilder(const QString& pattern, int depth)
        : m_pattern(pattern), m_depth(depth > 0 ? depth : std::numeric_limits<int>::max())
    {
    }

    /// Adds `node` with what these variables make of it, if any of it matches.
    void add(SymbolNode node, const QVector<Variable>& variables, int level,
             std::vector<SymbolNode>* nodes) const
    {
        for (const Variable& variable : variables)
            addVariable(variable, node, level + 1, &node.children);
        if (node.children.empty() && !matchesPattern(node.label, m_pattern))
            return;
        if (level >= m_depth)
            node.children.clear();
        nodes->push_back(node);
    }

private:
    void addVariable(const Variable& variable, const SymbolNode& parent, int level,
                     std::vector<SymbolNode>* nodes) const
    {
        SymbolNode node;
        node.name = variable.name + boundsText(variable);
        node.label = parent.label + QLatin1Char('.') + node.name;
        node.variable = &variable;
        node.area = parent.variable == nullptr ? variable.area : parent.area;
        node.address = parent.address + variable.offset;
        add(node, variable.structure ? variable.structure->members : QVector<Variable>(), level,
            nodes);
    }

    const QString& m_pattern;
    const int m_depth;
};

} // namespace

std::vector<SymbolNode> symbolTree(const Project& project, const QString& pattern, int depth)
{
    const TreeBuilder builder(pattern, depth);
    std::vector<SymbolNode> scopes;
    for (const ScopeDefinition& scope : project.scopes) {
        SymbolNode node;
        node.name = scope.name;
        node.label = scope.name;
        builder.add(node, scope.variables, 1, &scopes);
    }
    return scopes;
}

QString typeName(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->name;
    const QString name = QString::fromLatin1(variable.type->name);
    return isText(*variable.type) ? QStringLiteral("%1(%2)").arg(name).arg(variable.stringLength)
                                  : name;
}

} // namespace plc
