#include "project/symbol_walk.h"

#include <QtCore/QStringList>

namespace plc::project {
namespace {

QString bracketed(const QStringList& subscripts)
{
    return subscripts.isEmpty()
               ? QString()
               : QLatin1Char('[') + subscripts.join(QLatin1Char(',')) + QLatin1Char(']');
}

QString firstSubscripts(const Variable& variable)
{
    QStringList texts;
    for (const ArrayDimension& dimension : variable.dimensions)
        texts.append(QString::number(dimension.lower));
    return bracketed(texts);
}

} // namespace

QString boundsText(const Variable& variable)
{
    QStringList texts;
    for (const ArrayDimension& dimension : variable.dimensions)
        texts.append(QStringLiteral("%1..%2").arg(dimension.lower).arg(dimension.upper));
    return bracketed(texts);
}

bool SymbolEntries::Iterator::enterNextScope()
{
    if (m_nextScope >= int(m_symbols->scopes.size()))
        return false;
    const ScopeDefinition& scope = m_symbols->scopes[m_nextScope++];
    m_levels.push_back({&scope.variables, 0, scope.name, scope.name});
    return true;
}

void SymbolEntries::Iterator::findNext()
{
    m_entry.variable = nullptr;
    while (!m_levels.empty() || enterNextScope()) {
        Level& level = m_levels.back();
        if (level.next >= int(level.variables->size())) {
            m_levels.pop_back();
            continue;
        }
        const Variable& variable = level.variables->at(level.next++);
        const QString name = QLatin1Char('.') + variable.name;
        m_entry.pattern = level.pattern + name + boundsText(variable);
        m_entry.firstLabel = level.firstLabel + name + firstSubscripts(variable);
        if (!variable.structure) {
            m_entry.variable = &variable;
            return;
        }
        m_levels.push_back({&variable.structure->members, 0, m_entry.pattern, m_entry.firstLabel});
    }
}

} // namespace plc::project
