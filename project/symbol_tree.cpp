#include "project/symbol_tree.h"

#include <limits>

#include "project/label_pattern.h"
#include "project/symbol_walk.h"
#include "values/iec_types.h"

namespace plc::project {
namespace {

class TreeWalk {
public:
    TreeWalk(const QString& pattern, int depth, const std::function<void(const SymbolNode&)>& visit)
        : m_pattern(pattern, LabelPattern::Place::Inside),
          m_depth(depth > 0 ? depth : std::numeric_limits<int>::max()),
          m_visit(visit)
    {
    }

    void walkScopes(const QVector<ScopeDefinition>& scopes) const
    {
        QVector<int> wanted;
        for (int i = 0; i < int(scopes.size()); ++i) {
            if (isWanted(scopeNode(scopes[i]), scopes[i].variables))
                wanted.append(i);
        }
        for (const int i : wanted) {
            SymbolNode node = scopeNode(scopes[i]);
            node.isLast = i == wanted.last();
            m_visit(node);
            walkMembers(node, scopes[i].variables);
        }
    }

private:
    static SymbolNode scopeNode(const ScopeDefinition& scope)
    {
        SymbolNode node;
        node.name = scope.name;
        node.label = scope.name;
        return node;
    }

    static SymbolNode nodeOf(const Variable& variable, const SymbolNode& parent)
    {
        SymbolNode node;
        node.name = variable.name + boundsText(variable);
        node.label = parent.label + QLatin1Char('.') + node.name;
        node.variable = &variable;
        node.area = parent.variable ? parent.area : variable.area;
        node.address = parent.address + variable.offset;
        node.level = parent.level + 1;
        return node;
    }

    static QVector<Variable> membersOf(const Variable& variable)
    {
        return variable.structure ? variable.structure->members : QVector<Variable>();
    }

    /// Whether the node matches or something in it does.
    bool isWanted(const SymbolNode& node, const QVector<Variable>& members) const
    {
        if (m_pattern.matches(node.label))
            return true;
        for (const Variable& member : members) {
            if (isWanted(nodeOf(member, node), membersOf(member)))
                return true;
        }
        return false;
    }

    void walkMembers(const SymbolNode& parent, const QVector<Variable>& members) const
    {
        if (parent.level >= m_depth)
            return;
        QVector<int> wanted;
        for (int i = 0; i < int(members.size()); ++i) {
            if (isWanted(nodeOf(members[i], parent), membersOf(members[i])))
                wanted.append(i);
        }
        for (const int i : wanted) {
            SymbolNode node = nodeOf(members[i], parent);
            node.isLast = i == wanted.last();
            m_visit(node);
            walkMembers(node, membersOf(members[i]));
        }
    }

    const LabelPattern m_pattern;
    const int m_depth;
    const std::function<void(const SymbolNode&)>& m_visit;
};

} // namespace

void walkSymbolTree(const Symbols& symbols, const QString& pattern, int depth,
                    const std::function<void(const SymbolNode&)>& visit)
{
    TreeWalk(pattern, depth, visit).walkScopes(symbols.scopes);
}

QString typeName(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->name;
    const QString name = QString::fromLatin1(variable.type->name);
    return values::isText(*variable.type)
               ? QStringLiteral("%1(%2)").arg(name).arg(variable.stringLength)
               : name;
}

} // namespace plc::project
