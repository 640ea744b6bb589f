#include "project/symbol_builder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "project/label_syntax.h"
#include "project/memory_layout.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

constexpr qint64 kMostBuiltElements = std::numeric_limits<qint32>::max();
/// The driver is told the bound behind the last element, which must be a 32-bit number too.
constexpr int kHighestBound = std::numeric_limits<qint32>::max() - 1;

/// "STRING(19)" taken apart; 0 where there is no length.
int takeLength(QString* type)
{
    const int bracket = int(type->indexOf(QLatin1Char('(')));
    if (bracket < 0 || !type->endsWith(QLatin1Char(')')))
        return 0;
    const int length = type->mid(bracket + 1, int(type->size()) - bracket - 2).toInt();
    type->truncate(bracket);
    return qMax(0, length);
}

} // namespace

SymbolBuilder& SymbolBuilder::structure(const QString& name, qint32 size)
{
    endStructure();
    m_where = name;
    if (!isLabelName(name) || values::findIecType(name))
        return fail(name, QStringLiteral("%1 is no name of a structure").arg(values::quoted(name)));
    const auto isSame = [&name](const auto& other) { return other->name == name; };
    if (std::any_of(m_symbols.structures.cbegin(), m_symbols.structures.cend(), isSame))
        return fail(name, QStringLiteral("there are two structures of this name"));
    if (size < 1)
        return fail(name, QStringLiteral("a structure has at least 1 byte, not %1").arg(size));
    m_names.clear();
    m_structure = std::make_shared<StructureType>();
    m_structure->name = name;
    m_structure->size = size;
    return *this;
}

SymbolBuilder& SymbolBuilder::member(const QString& name, const QString& type, qint32 offset,
                                     const Dimensions& dimensions)
{
    if (!m_structure)
        return fail(name, QStringLiteral("a member stands behind its structure"));
    m_where = m_structure->name + QLatin1Char('.') + name;
    if (m_names.contains(name))
        return fail(m_where, QStringLiteral("there are two members of this name"));
    Variable member;
    member.name = name;
    member.offset = offset;
    if (!declare(type, dimensions, &member))
        return *this;
    if (member.type && values::isBit(*member.type))
        return fail(m_where, QStringLiteral("members have byte offsets: BOOL or WORD, not BIT"));
    if (transferEnd(member) > m_structure->size) {
        return fail(m_where, QStringLiteral("it ends at byte %1, but the structure has %2 bytes")
                                 .arg(transferEnd(member))
                                 .arg(m_structure->size));
    }
    m_names.insert(name);
    m_structure->members.append(member);
    return *this;
}

SymbolBuilder& SymbolBuilder::scope(const QString& name)
{
    endStructure();
    if (!name.isEmpty() && !isLabelName(name))
        return fail(name, QStringLiteral("%1 is no name of a scope").arg(values::quoted(name)));
    const auto isSame = [&name](const auto& other) { return other.name == name; };
    if (std::any_of(m_symbols.scopes.cbegin(), m_symbols.scopes.cend(), isSame))
        return fail(name, QStringLiteral("there are two scopes of this name"));
    m_names.clear();
    m_symbols.scopes.append({name, {}});
    return *this;
}

SymbolBuilder& SymbolBuilder::variable(const QString& name, const QString& type, int area,
                                       qint32 address, const Dimensions& dimensions)
{
    if (m_structure || m_symbols.scopes.isEmpty())
        return fail(name, QStringLiteral("a variable stands behind its scope"));
    m_where = m_symbols.scopes.last().name + QLatin1Char('.') + name;
    if (m_names.contains(name))
        return fail(m_where, QStringLiteral("there are two variables of this name"));
    if (area < 0 || area > kHighestAreaIndex) {
        return fail(m_where, QStringLiteral("areas have the numbers 0 to %1, not %2")
                                 .arg(kHighestAreaIndex)
                                 .arg(area));
    }
    Variable variable;
    variable.name = name;
    variable.offset = address;
    variable.area = area;
    if (declare(type, dimensions, &variable)) {
        m_names.insert(name);
        m_symbols.scopes.last().variables.append(variable);
    }
    return *this;
}

Expected<Symbols> SymbolBuilder::build()
{
    endStructure();
    if (hasFailed())
        return m_error;
    return m_symbols;
}

/// Remembers the first mistake.
SymbolBuilder& SymbolBuilder::fail(const QString& where, const QString& what)
{
    if (!hasFailed())
        m_error.text = QStringLiteral("%1: %2").arg(where, what);
    return *this;
}

void SymbolBuilder::endStructure()
{
    if (m_structure && m_structure->members.isEmpty())
        fail(m_structure->name, QStringLiteral("a structure has at least one member"));
    if (m_structure)
        m_symbols.structures.append(m_structure);
    m_structure.reset();
}

bool SymbolBuilder::declare(const QString& type, const Dimensions& dimensions, Variable* variable)
{
    if (!isLabelName(variable->name))
        fail(m_where, QStringLiteral("%1 is no name").arg(values::quoted(variable->name)));
    else if (variable->offset < 0)
        fail(m_where, QStringLiteral("%1 is no address").arg(variable->offset));
    else if (setType(variable, type) && setDimensions(variable, dimensions))
        return !hasFailed();
    return false;
}

bool SymbolBuilder::setType(Variable* variable, const QString& type)
{
    QString name = type;
    const int length = takeLength(&name);
    variable->type = values::findIecType(name);
    const bool isText = variable->type && values::isText(*variable->type);
    if (isText != (length > 0)) {
        fail(m_where, QStringLiteral("%1 is no type; a text has its length in brackets, as in "
                                     "STRING(19)")
                          .arg(values::quoted(type)));
        return false;
    }
    variable->stringLength = length;
    for (const std::shared_ptr<const StructureType>& structure :
         std::as_const(m_symbols.structures)) {
        if (!variable->type && structure->name == name)
            variable->structure = structure;
    }
    if (!variable->type && !variable->structure) {
        fail(m_where, QStringLiteral("%1 is no IEC type and no structure that stands before")
                          .arg(values::quoted(type)));
        return false;
    }
    return true;
}

bool SymbolBuilder::setDimensions(Variable* variable, const Dimensions& dimensions)
{
    qint64 count = 1;
    for (const ArrayDimension& dimension : dimensions) {
        if (dimension.upper < dimension.lower) {
            fail(m_where, QStringLiteral("a dimension ends at %1, before it begins at %2")
                              .arg(dimension.upper)
                              .arg(dimension.lower));
            return false;
        }
        if (dimension.upper > kHighestBound) {
            fail(m_where, QStringLiteral("a dimension ends at %1 at most").arg(kHighestBound));
            return false;
        }
        count *= qint64(dimension.upper) - dimension.lower + 1;
        if (count > kMostBuiltElements) {
            fail(m_where,
                 QStringLiteral("an array has at most %1 elements").arg(kMostBuiltElements));
            return false;
        }
    }
    variable->dimensions = dimensions;
    if (!dimensions.isEmpty() && variable->type && values::isText(*variable->type) &&
        elementSize(*variable) > kTextElementStride) {
        fail(m_where, QStringLiteral("texts of an array have at most %1 bytes with the zero behind")
                          .arg(kTextElementStride));
        return false;
    }
    return true;
}

} // namespace plc::project
