#include "project/label_lookup.h"

#include <algorithm>

#include "project/memory_layout.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

constexpr int kSearchesBeforeIndex = 4;

/// `known` makes a list of the names that there are.
template <typename Known>
Error notFound(const QString& where, const QString& name, Hints hints, Known known)
{
    const QString hint = hints == Hints::Given ? values::nearestNameHint(name, known()) : QString();
    return {QStringLiteral("%1 has no %2%3").arg(where, values::quoted(name), hint)};
}

QStringList namesOf(const QVector<Variable>& variables)
{
    QStringList names;
    for (const Variable& variable : variables)
        names.append(variable.name);
    return names;
}

Expected<const Variable*> findMember(const StructureType& structure, const QString& name,
                                     Hints hints)
{
    for (const Variable& member : structure.members) {
        if (member.name == name)
            return &member;
    }
    return notFound(QStringLiteral("structure %1").arg(values::quoted(structure.name)), name, hints,
                    [&structure] { return namesOf(structure.members); });
}

QString declaredBounds(const Variable& variable)
{
    QStringList ranges;
    for (const ArrayDimension& dimension : variable.dimensions)
        ranges.append(QStringLiteral("%1..%2").arg(dimension.lower).arg(dimension.upper));
    return QStringLiteral("[%1]").arg(ranges.join(QLatin1Char(',')));
}

bool isWithinBounds(const Variable& variable, const LabelPart& part)
{
    if (part.subscripts.size() != variable.dimensions.size())
        return false;
    for (int d = 0; d < int(variable.dimensions.size()); ++d) {
        if (part.subscripts[d].from < variable.dimensions[d].lower ||
            part.subscripts[d].to > variable.dimensions[d].upper)
            return false;
    }
    return true;
}

/// Moves `target` from the start of `variable` to the element that `part` names.
Expected<void> enterElement(const Variable& variable, const LabelPart& part, LabelTarget* target)
{
    if (!isWithinBounds(variable, part)) {
        return Error{variable.dimensions.isEmpty()
                         ? QStringLiteral("%1 is not an array").arg(values::quoted(part.name))
                         : QStringLiteral("the subscripts of %1 must lie within %2")
                               .arg(values::quoted(part.name), declaredBounds(variable))};
    }
    QVector<qint64> subscripts;
    for (const SubscriptRange& range : part.subscripts)
        subscripts.append(range.from);
    const qint64 index = elementIndex(variable.dimensions, subscripts);
    target->variable = &variable;
    target->address += variable.offset + index * elementStride(variable);
    target->elements = elementCount(variable) - index;
    return {};
}

} // namespace

const Variable* LabelFinder::Scope::find(const QString& name) const
{
    if (m_searches >= kSearchesBeforeIndex)
        return m_index.value(name);
    if (++m_searches == kSearchesBeforeIndex)
        makeIndex();
    const auto found =
        std::find_if(m_variables->begin(), m_variables->end(),
                     [&name](const Variable& variable) { return variable.name == name; });
    return found == m_variables->end() ? nullptr : &*found;
}

void LabelFinder::Scope::makeIndex() const
{
    m_index.reserve(m_variables->size());
    for (const Variable& variable : *m_variables) {
        if (!m_index.contains(variable.name))
            m_index.insert(variable.name, &variable);
    }
}

QStringList LabelFinder::Scope::names() const
{
    return namesOf(*m_variables);
}

LabelFinder::LabelFinder(const Symbols& symbols)
{
    for (const ScopeDefinition& scope : symbols.scopes)
        m_scopes.insert(scope.name, Scope(&scope.variables));
}

Expected<const Variable*> LabelFinder::findVariable(const QVector<LabelPart>& parts,
                                                    Hints hints) const
{
    const auto scope = m_scopes.constFind(parts[0].name);
    if (scope == m_scopes.constEnd()) {
        return notFound(QStringLiteral("the project"), parts[0].name, hints,
                        [this] { return m_scopes.keys(); });
    }
    const Variable* variable = scope->find(parts[1].name);
    if (!variable) {
        return notFound(QStringLiteral("scope %1").arg(values::quoted(parts[0].name)),
                        parts[1].name, hints, [&scope] { return scope->names(); });
    }
    return variable;
}

Expected<LabelTarget> LabelFinder::find(const QVector<LabelPart>& parts, Hints hints) const
{
    Expected<const Variable*> variable = findVariable(parts, hints);
    if (!variable)
        return variable.error();
    LabelTarget target;
    target.area = (*variable)->area;
    for (int index = 1;; ++index) {
        if (const Expected<void> entered = enterElement(**variable, parts[index], &target);
            !entered)
            return entered.error();
        const bool isLast = index + 1 == int(parts.size());
        const std::shared_ptr<const StructureType>& structure = (*variable)->structure;
        if (!structure && isLast) {
            target.size = elementSize(**variable);
            return target;
        }
        const QString name = values::quoted(parts[index].name);
        if (!structure)
            return Error{QStringLiteral("%1 has no members").arg(name)};
        if (isLast) {
            return Error{
                QStringLiteral("%1 is a structure; a label ends at one of its members").arg(name)};
        }
        variable = findMember(*structure, parts[index + 1].name, hints);
        if (!variable)
            return variable.error();
    }
}

Expected<LabelTarget> LabelFinder::find(const QString& label, Hints hints) const
{
    const Expected<QVector<LabelPart>> parts = parseLabel(label);
    if (!parts)
        return parts.error();
    if (isPattern(*parts))
        return Error{QStringLiteral("a range of subscripts names more than one value")};
    return find(*parts, hints);
}

} // namespace plc::project
