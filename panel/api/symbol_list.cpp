#include "panel/api/symbol_list.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <limits>

#include "project/label_syntax.h"
#include "project/symbol_tree.h"

namespace plc::panel {
namespace {

using project::ArrayDimension;
using project::Variable;

int elementsOf(const Variable& variable)
{
    qint64 count = 1;
    for (const ArrayDimension& dimension : variable.dimensions)
        count = std::min<qint64>(count * (qint64(dimension.upper) - dimension.lower + 1),
                                 std::numeric_limits<int>::max());
    return int(count);
}

ListedSymbol scopeSymbol(const project::ScopeDefinition& scope)
{
    ListedSymbol symbol;
    symbol.name = scope.name;
    symbol.label = scope.name;
    symbol.children = int(scope.variables.size());
    return symbol;
}

void fillElement(const Variable& variable, ListedSymbol* symbol)
{
    symbol->kind = variable.structure ? ListedSymbol::Structure : ListedSymbol::Value;
    symbol->children = variable.structure ? int(variable.structure->members.size()) : 0;
    symbol->type = project::typeName(variable);
    symbol->unit = variable.unit;
    symbol->description = variable.description;
}

ListedSymbol variableSymbol(const QString& parent, const Variable& variable)
{
    ListedSymbol symbol;
    symbol.name = variable.name;
    symbol.label = parent + QLatin1Char('.') + variable.name;
    fillElement(variable, &symbol);
    if (!variable.dimensions.isEmpty()) {
        symbol.kind = ListedSymbol::Array;
        symbol.children = elementsOf(variable);
    }
    return symbol;
}

/// The subscripts of an element, the last running fastest.
QString subscriptsOf(const Variable& variable, int element)
{
    QStringList texts;
    for (int i = int(variable.dimensions.size()) - 1; i >= 0; --i) {
        const ArrayDimension& dimension = variable.dimensions[i];
        const int extent = dimension.upper - dimension.lower + 1;
        texts.prepend(QString::number(dimension.lower + element % extent));
        element /= extent;
    }
    return QLatin1Char('[') + texts.join(QLatin1Char(',')) + QLatin1Char(']');
}

ListedSymbol elementSymbol(const QString& array, const Variable& variable, int element)
{
    ListedSymbol symbol;
    symbol.name = subscriptsOf(variable, element);
    symbol.label = array + symbol.name;
    fillElement(variable, &symbol);
    return symbol;
}

const Variable* findVariable(const QVector<Variable>& variables, const QString& name)
{
    const auto found =
        std::find_if(variables.begin(), variables.end(),
                     [&name](const Variable& variable) { return variable.name == name; });
    return found == variables.end() ? nullptr : &*found;
}

bool areWithin(const QVector<project::SubscriptRange>& subscripts, const Variable& variable)
{
    if (subscripts.size() != variable.dimensions.size())
        return false;
    for (int i = 0; i < int(subscripts.size()); ++i) {
        if (subscripts[i].from < variable.dimensions[i].lower ||
            subscripts[i].to > variable.dimensions[i].upper)
            return false;
    }
    return true;
}

SymbolList membersOf(const QString& label, const QVector<Variable>& variables)
{
    SymbolList list;
    list.isComplete = variables.size() <= kMostListed;
    for (const Variable& variable : variables.mid(0, kMostListed))
        list.symbols.append(variableSymbol(label, variable));
    return list;
}

SymbolList partsOf(const QString& label, const Variable& variable, bool isElement)
{
    if (variable.dimensions.isEmpty() || isElement)
        return variable.structure ? membersOf(label, variable.structure->members) : SymbolList();
    SymbolList list;
    const int all = elementsOf(variable);
    list.isComplete = all <= kMostListed;
    for (int element = 0; element < std::min(all, kMostListed); ++element)
        list.symbols.append(elementSymbol(label, variable, element));
    return list;
}

/// What is below `label`, whose parts behind the scope lead through these variables.
Expected<SymbolList> follow(const QString& label, const QVector<project::LabelPart>& parts,
                            const QVector<Variable>* variables)
{
    const Error missing{QStringLiteral("%1 leads to nothing").arg(label)};
    for (int i = 1; i < int(parts.size()); ++i) {
        const Variable* variable = findVariable(*variables, parts[i].name);
        const bool isElement = !parts[i].subscripts.isEmpty();
        if (!variable || (isElement && !areWithin(parts[i].subscripts, *variable)))
            return missing;
        if (i + 1 == int(parts.size()))
            return partsOf(label, *variable, isElement);
        if (!variable->structure || (!isElement && !variable->dimensions.isEmpty()))
            return missing;
        variables = &variable->structure->members;
    }
    return missing;
}

/// Goes through all symbols, structures before their members.
class Search {
public:
    Search(const QString& text, int limit)
        : m_words(text.split(QLatin1Char(' '), Qt::SkipEmptyParts)), m_limit(limit)
    {
    }

    void walk(const QString& parent, const QVector<Variable>& variables)
    {
        for (const Variable& variable : variables) {
            if (!m_found.isComplete)
                return;
            const ListedSymbol symbol = variableSymbol(parent, variable);
            take(symbol);
            if (!variable.structure)
                continue;
            if (symbol.kind != ListedSymbol::Array) {
                walk(symbol.label, variable.structure->members);
                continue;
            }
            for (int i = 0; i < symbol.children && m_found.isComplete; ++i) {
                const ListedSymbol element = elementSymbol(symbol.label, variable, i);
                take(element);
                walk(element.label, variable.structure->members);
            }
        }
    }

    const SymbolList& found() const { return m_found; }

private:
    /// Up to the first that there is no room for.
    void take(const ListedSymbol& symbol)
    {
        if (!m_found.isComplete)
            return;
        if (m_searched++ == kMostSearched) {
            m_found.isComplete = false;
            return;
        }
        const bool isFound =
            std::all_of(m_words.begin(), m_words.end(), [&symbol](const QString& word) {
                return symbol.label.contains(word, Qt::CaseInsensitive) ||
                       symbol.description.contains(word, Qt::CaseInsensitive);
            });
        if (isFound && m_found.symbols.size() == m_limit)
            m_found.isComplete = false;
        else if (isFound)
            m_found.symbols.append(symbol);
    }

    const QStringList m_words;
    const int m_limit;
    SymbolList m_found;
    int m_searched = 0;
};

} // namespace

Expected<SymbolList> symbolsUnder(const QString& label, const project::Symbols& symbols)
{
    SymbolList scopes;
    for (const project::ScopeDefinition& scope : symbols.scopes) {
        if (!label.isEmpty() && scope.name == label)
            return membersOf(label, scope.variables);
        scopes.symbols.append(scopeSymbol(scope));
    }
    if (label.isEmpty())
        return scopes;
    const Expected<QVector<project::LabelPart>> parts = project::parseLabel(label);
    if (!parts)
        return Error{QStringLiteral("%1: %2").arg(label, parts.error().text)};
    for (const project::ScopeDefinition& scope : symbols.scopes) {
        if (scope.name == parts->first().name && !project::isPattern(*parts))
            return follow(label, *parts, &scope.variables);
    }
    return Error{QStringLiteral("%1 leads to nothing").arg(label)};
}

SymbolList searchSymbols(const QString& text, int limit, const project::Symbols& symbols)
{
    Search search(text, limit);
    for (const project::ScopeDefinition& scope : symbols.scopes)
        search.walk(scope.name, scope.variables);
    return search.found();
}

} // namespace plc::panel
