#include "project/label_lookup.h"

#include <algorithm>

#include "project/memory_layout.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

constexpr int kSearchesBeforeIndex = 4;

QString notFound(const QString& where, const QString& name, const QStringList& known)
{
    return QStringLiteral("%1 has no %2%3")
        .arg(where, values::quoted(name), values::nearestNameHint(name, known));
}

const Variable* findMember(const StructureType& structure, const QString& name, QString* error)
{
    QStringList known;
    for (const Variable& member : structure.members) {
        if (member.name == name)
            return &member;
        known.append(member.name);
    }
    *error =
        notFound(QStringLiteral("structure %1").arg(values::quoted(structure.name)), name, known);
    return nullptr;
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
bool enterElement(const Variable& variable, const LabelPart& part, LabelTarget* target,
                  QString* error)
{
    if (!isWithinBounds(variable, part)) {
        *error = variable.dimensions.isEmpty()
                     ? QStringLiteral("%1 is not an array").arg(values::quoted(part.name))
                     : QStringLiteral("the subscripts of %1 must lie within %2")
                           .arg(values::quoted(part.name), declaredBounds(variable));
        return false;
    }
    QVector<qint64> subscripts;
    for (const SubscriptRange& range : part.subscripts)
        subscripts.append(range.from);
    const qint64 index = elementIndex(variable.dimensions, subscripts);
    target->variable = &variable;
    target->address += variable.offset + index * elementStride(variable);
    target->elements = elementCount(variable) - index;
    return true;
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
    QStringList names;
    for (const Variable& variable : *m_variables)
        names.append(variable.name);
    return names;
}

LabelFinder::LabelFinder(const Symbols& symbols)
{
    for (const ScopeDefinition& scope : symbols.scopes)
        m_scopes.insert(scope.name, Scope(&scope.variables));
}

const Variable* LabelFinder::findVariable(const QVector<LabelPart>& parts, QString* error) const
{
    const auto scope = m_scopes.constFind(parts[0].name);
    if (scope == m_scopes.constEnd()) {
        *error = notFound(QStringLiteral("the project"), parts[0].name, m_scopes.keys());
        return nullptr;
    }
    const Variable* variable = scope->find(parts[1].name);
    if (variable == nullptr) {
        *error = notFound(QStringLiteral("scope %1").arg(values::quoted(parts[0].name)),
                          parts[1].name, scope->names());
    }
    return variable;
}

std::optional<LabelTarget> LabelFinder::find(const QVector<LabelPart>& parts, QString* error) const
{
    const Variable* variable = findVariable(parts, error);
    if (variable == nullptr)
        return {};
    LabelTarget target;
    target.area = variable->area;
    for (int index = 1;; ++index) {
        if (!enterElement(*variable, parts[index], &target, error))
            return {};
        const bool isLast = index + 1 == int(parts.size());
        if (!variable->structure) {
            if (isLast)
                return target;
            *error = QStringLiteral("%1 has no members").arg(values::quoted(parts[index].name));
            return {};
        }
        if (isLast) {
            *error = QStringLiteral("%1 is a structure; a label ends at one of its members")
                         .arg(values::quoted(parts[index].name));
            return {};
        }
        variable = findMember(*variable->structure, parts[index + 1].name, error);
        if (variable == nullptr)
            return {};
    }
}

std::optional<LabelTarget> LabelFinder::find(const QString& label, QString* error) const
{
    const std::optional<QVector<LabelPart>> parts = parseLabel(label, error);
    if (!parts)
        return {};
    if (isPattern(*parts)) {
        *error = QStringLiteral("a range of subscripts names more than one value");
        return {};
    }
    return find(*parts, error);
}

} // namespace plc::project
