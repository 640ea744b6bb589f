#include "iec/type_resolver.h"

#include <limits>

#include "iec/description.h"
#include "iec/elementary_types.h"
#include "iec/parser.h"
#include "project/declaration_reader.h"
#include "project/memory_layout.h"
#include "values/nearest_name.h"

namespace plc::iec {
namespace {

/// Characters of a text that is declared without a length.
constexpr int kUsualTextLength = 80;
/// Names of types that stand for others, one behind the other.
constexpr int kMostAliases = 30;

constexpr int kHighestAlignment = 8;

/// Of IEC 61131-3 and of what all programming systems bring along.
constexpr const char* kStandardFunctionBlocks[] = {"TON",  "TOF", "TP",     "CTU",    "CTD",
                                                   "CTUD", "SR",  "R_TRIG", "F_TRIG", "RS",
                                                   "SEMA", "RTC", "BLINK"};

constexpr qint64 kLowestBound = std::numeric_limits<qint32>::min();
constexpr qint64 kHighestBound = project::kHighestOffset - 1;

qint64 roundUp(qint64 number, int step)
{
    return (number + step - 1) / step * step;
}

bool isStandardFunctionBlock(const QString& name)
{
    for (const char* block : kStandardFunctionBlocks) {
        if (name.compare(QLatin1String(block), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

/// Bytes from the first to the last one of a variable.
qint64 sizeOf(const project::Variable& variable)
{
    return (project::elementCount(variable) - 1) * project::elementStride(variable) +
           project::elementSize(variable);
}

} // namespace

bool hasUnit(const project::Variable& variable)
{
    return variable.type && variable.type->format != values::ValueFormat::Boolean &&
           !values::isText(*variable.type);
}

/// A structure that grows member by member.
class TypeResolver::Layout {
public:
    /// Nothing in it lies at multiples of more than `largestAlignment`.
    Layout(const QString& name, bool isUnion, int largestAlignment)
        : m_isUnion(isUnion), m_largestAlignment(largestAlignment)
    {
        m_structure.name = name;
    }

    QString name() const { return m_structure.name; }
    bool isEmpty() const { return m_structure.members.isEmpty(); }
    bool has(const QString& member) const { return m_names.contains(member.toLower()); }
    int alignment() const { return m_alignment; }
    int largestAlignment() const { return m_largestAlignment; }
    int nesting() const { return m_nesting; }
    qint64 size() const { return roundUp(qMax(m_end, m_largestEnd), m_alignment); }

    /// Puts the structure that this one extends in front.
    void startWith(const project::StructureType& base, int alignment, int nesting)
    {
        m_structure.members = base.members;
        for (const project::Variable& member : base.members)
            m_names.insert(member.name.toLower());
        m_end = base.size;
        m_largestEnd = base.size;
        m_alignment = qMin(alignment, m_largestAlignment);
        m_nesting = nesting;
    }
    void append(project::Variable member, int alignment, int nesting)
    {
        const qint64 offset = m_isUnion ? 0 : roundUp(m_end, alignment);
        // Of a union only the first member is no overlay.
        member.overlay = m_isUnion && !isEmpty();
        member.offset = qint32(qMin(offset, project::kHighestOffset));
        m_end = offset + sizeOf(member);
        m_largestEnd = qMax(m_largestEnd, project::transferEnd(member));
        m_alignment = qMax(m_alignment, alignment);
        m_nesting = qMax(m_nesting, nesting);
        m_names.insert(member.name.toLower());
        m_structure.members.append(member);
    }
    std::shared_ptr<const project::StructureType> finished(const QString& description)
    {
        m_structure.size = qint32(size());
        m_structure.description = description;
        return std::make_shared<project::StructureType>(m_structure);
    }

private:
    project::StructureType m_structure;
    QSet<QString> m_names;
    const bool m_isUnion;
    const int m_largestAlignment;
    qint64 m_end = 0;        ///< Of the last member.
    qint64 m_largestEnd = 0; ///< Of what reading a member touches.
    int m_alignment = 1;
    int m_nesting = 0; ///< Of the structures among the members.
};

TypeResolver::TypeResolver(const Declarations& declarations, Constants* constants, int alignment,
                           Diagnostics* diagnostics)
    : m_constants(constants),
      m_alignment(alignment),
      m_diagnostics(diagnostics),
      m_functionBlocks(declarations.functionBlocks)
{
    for (const TypeDefinition& type : declarations.types) {
        const QString key = type.name.toLower();
        if (findElementaryType(type.name)) {
            fail(type.position, QStringLiteral("%1 is the name of an elementary type")
                                    .arg(values::quoted(type.name)));
        } else if (m_types.contains(key)) {
            fail(type.position, QStringLiteral("type %1 is declared in line %2 already")
                                    .arg(values::quoted(type.name))
                                    .arg(m_types.value(key).definition->position.line));
        } else {
            m_types[key].definition = &type;
        }
    }
}

/// Always false.
bool TypeResolver::fail(const Position& position, const QString& text)
{
    m_diagnostics->error(position, text);
    return false;
}

QStringList TypeResolver::typeNames() const
{
    QStringList names = elementaryTypeNames();
    for (const Entry& entry : m_types)
        names.append(entry.definition->name);
    return names;
}

bool TypeResolver::isKnown(const TypeSpec& type) const
{
    if (type.kind == TypeSpec::Array)
        return isKnown(*type.element);
    return type.kind != TypeSpec::Named || findElementaryType(type.name) ||
           m_types.contains(type.name.toLower());
}

QString TypeResolver::unknownText(const TypeSpec& type) const
{
    if (type.kind == TypeSpec::Array)
        return unknownText(*type.element);
    const QString name = values::quoted(type.name);
    const QString advice =
        QStringLiteral("; give those that you need variables of their own at %M addresses");
    if (m_functionBlocks.contains(type.name.toLower()))
        return name + QStringLiteral(" is a function block, whose members are not read") + advice;
    if (isStandardFunctionBlock(type.name)) {
        return name + QStringLiteral(" is a standard function block, whose members are not known") +
               advice;
    }
    return QStringLiteral("its type %1 is not declared in these files; import its declaration too")
        .arg(name);
}

bool TypeResolver::resolve(const TypeSpec& type, const QString& scope, const QString& name,
                           project::Variable* variable)
{
    switch (type.kind) {
        case TypeSpec::Named:
        case TypeSpec::Enumeration:
            return resolveNamed(type, variable);
        case TypeSpec::Text:
            return resolveText(type, scope, variable);
        case TypeSpec::Array:
            return resolveArray(type, scope, name, variable);
        case TypeSpec::Pointer:
            variable->type = pointerType();
            return true;
        case TypeSpec::Structure:
        case TypeSpec::Union:
            break;
    }
    variable->structure = layOut(type, scope, freeName(name), QString());
    return bool(variable->structure);
}

bool TypeResolver::resolveNamed(const TypeSpec& type, project::Variable* variable)
{
    variable->type = findElementaryType(type.name);
    if (variable->type)
        return true;
    const QString key = type.name.toLower();
    if (m_types.contains(key))
        return resolveDefined(key, type, variable);
    if (m_functionBlocks.contains(key) || isStandardFunctionBlock(type.name))
        return fail(type.position, unknownText(type));
    return fail(
        type.position,
        QStringLiteral("found %1, expected an elementary type or one that these files "
                       "declare%2")
            .arg(values::quoted(type.name), values::nearestNameHint(type.name, typeNames())));
}

/// Each type is worked out, and complained about, once.
bool TypeResolver::resolveDefined(const QString& key, const TypeSpec& type,
                                  project::Variable* variable)
{
    if (m_underWay.contains(key)) {
        const QStringList circle = m_underWay.mid(m_underWay.indexOf(key)) << key;
        return fail(type.position,
                    QStringLiteral("type %1 contains itself: %2")
                        .arg(values::quoted(type.name), circle.join(QLatin1String(" > "))));
    }
    if (m_underWay.size() >= kMostAliases)
        return fail(type.position, QStringLiteral("found types made of each other in more than %1 "
                                                  "steps")
                                       .arg(kMostAliases));
    if (!m_types[key].isResolved) {
        m_underWay.append(key);
        project::Variable resolved;
        const bool isGood = resolveDefinition(*m_types[key].definition, &resolved);
        m_underWay.removeLast();
        Entry& entry = m_types[key];
        entry.isResolved = true;
        entry.isBroken = !isGood;
        entry.resolved = resolved;
    }
    const Entry& entry = m_types[key];
    variable->type = entry.resolved.type;
    variable->structure = entry.resolved.structure;
    variable->stringLength = entry.resolved.stringLength;
    variable->dimensions = entry.resolved.dimensions;
    return !entry.isBroken;
}

bool TypeResolver::resolveDefinition(const TypeDefinition& definition, project::Variable* variable)
{
    const TypeSpec& spec = *definition.type;
    if (spec.kind != TypeSpec::Structure && spec.kind != TypeSpec::Union)
        return resolve(spec, QString(), definition.name, variable);
    variable->structure = layOut(spec, QString(), definition.name, definition.description);
    return bool(variable->structure);
}

bool TypeResolver::resolveText(const TypeSpec& type, const QString& scope,
                               project::Variable* variable)
{
    variable->type = values::findIecType(type.name);
    variable->stringLength = kUsualTextLength;
    if (type.length.isEmpty())
        return true;
    const std::optional<qint64> length = m_constants->value(type.length, scope);
    if (!length)
        return false;
    if (*length < 1 || *length > project::kLongestText) {
        return fail(type.length.first().position,
                    QStringLiteral("found a length of %1, expected 1 to %2 characters")
                        .arg(*length)
                        .arg(project::kLongestText));
    }
    variable->stringLength = int(*length);
    return true;
}

bool TypeResolver::resolveArray(const TypeSpec& type, const QString& scope, const QString& name,
                                project::Variable* variable)
{
    for (const Range& range : type.ranges) {
        if (!resolveRange(range, scope, variable))
            return false;
    }
    // An array of arrays is one with the dimensions of both.
    project::Variable element;
    if (!resolve(*type.element, scope, name, &element))
        return false;
    variable->dimensions += element.dimensions;
    variable->type = element.type;
    variable->structure = element.structure;
    variable->stringLength = element.stringLength;
    return checkArray(type, *variable);
}

bool TypeResolver::resolveRange(const Range& range, const QString& scope,
                                project::Variable* variable)
{
    if (range.lower.first().is("*"))
        return fail(range.lower.first().position,
                    QStringLiteral("found an array of open length, expected bounds"));
    const std::optional<qint64> lower = m_constants->value(range.lower, scope);
    const std::optional<qint64> upper = m_constants->value(range.upper, scope);
    if (!lower || !upper)
        return false;
    for (const qint64 bound : {*lower, *upper}) {
        if (bound < kLowestBound || bound > kHighestBound) {
            return fail(range.lower.first().position,
                        QStringLiteral("found the bound %1, expected %2 to %3")
                            .arg(bound)
                            .arg(kLowestBound)
                            .arg(kHighestBound));
        }
    }
    if (*upper < *lower) {
        return fail(range.upper.first().position,
                    QStringLiteral("found the upper bound %1 below the lower bound %2")
                        .arg(*upper)
                        .arg(*lower));
    }
    variable->dimensions.append({int(*lower), int(*upper)});
    return true;
}

bool TypeResolver::checkArray(const TypeSpec& type, const project::Variable& variable)
{
    if (variable.dimensions.size() > project::kMostDimensions) {
        return fail(type.position, QStringLiteral("found %1 dimensions, expected at most %2")
                                       .arg(variable.dimensions.size())
                                       .arg(project::kMostDimensions));
    }
    qint64 count = 1;
    for (const project::ArrayDimension& dimension : variable.dimensions) {
        count *= qint64(dimension.upper) - dimension.lower + 1;
        if (count > project::kHighestOffset)
            return fail(type.position,
                        QStringLiteral("found more than %1 elements").arg(project::kHighestOffset));
    }
    if (sizeOf(variable) > project::kHighestOffset)
        return fail(
            type.position,
            QStringLiteral("found an array of more than %1 bytes").arg(project::kHighestOffset));
    if (variable.structure || !values::isText(*variable.type))
        return true;
    if (project::elementSize(variable) > project::kTextElementStride) {
        return fail(type.position,
                    QStringLiteral("found texts of %1 bytes with the terminating zero; the "
                                   "elements of a %2 array lie %3 bytes apart")
                        .arg(project::elementSize(variable))
                        .arg(QLatin1String(variable.type->name))
                        .arg(project::kTextElementStride));
    }
    if (project::elementSize(variable) < project::kTextElementStride) {
        m_diagnostics->warning(
            type.position, WarningKind::Layout,
            QStringLiteral("the elements of a text array are taken to lie %1 bytes apart, while "
                           "one of these has %2; compare with the addresses in the controller")
                .arg(project::kTextElementStride)
                .arg(project::elementSize(variable)));
    }
    return true;
}

std::shared_ptr<const project::StructureType> TypeResolver::layOut(const TypeSpec& type,
                                                                   const QString& scope,
                                                                   const QString& name,
                                                                   const QString& description)
{
    Layout layout(name, type.kind == TypeSpec::Union, type.packAlignment.value_or(m_alignment));
    if (!type.name.isEmpty() && !extendBase(type, &layout))
        return nullptr;
    for (const Declaration& member : type.members) {
        if (!appendMember(member, scope, &layout))
            return nullptr;
    }
    if (layout.isEmpty()) {
        fail(type.position,
             QStringLiteral("structure %1 has no members").arg(values::quoted(name)));
        return nullptr;
    }
    std::shared_ptr<const project::StructureType> structure = layout.finished(description);
    m_alignments.insert(structure.get(), layout.alignment());
    m_nesting.insert(structure.get(), layout.nesting() + 1);
    m_structures.append(structure);
    return structure;
}

bool TypeResolver::appendMember(const Declaration& declaration, const QString& scope,
                                Layout* layout)
{
    const QString structure = values::quoted(layout->name());
    project::Variable member;
    member.name = declaration.name;
    member.description = declaration.description;
    if (layout->has(declaration.name)) {
        return fail(declaration.position, QStringLiteral("structure %1 has a member %2 already")
                                              .arg(structure, values::quoted(declaration.name)));
    }
    if (declaration.address.kind != Token::End)
        return fail(declaration.address.position,
                    QStringLiteral("members of structures have no addresses of their own"));
    const QString typeName = layout->name() + QLatin1Char('_') + declaration.name;
    if (!resolve(*declaration.type, scope, typeName, &member))
        return false;
    if (member.type && values::isBit(*member.type))
        return fail(declaration.type->position,
                    QStringLiteral("found BIT; members have byte offsets, use BOOL or a WORD"));
    if (hasUnit(member))
        member.unit = takeUnit(&member.description);
    layout->append(member, alignmentWithin(member, layout->largestAlignment()),
                   m_nesting.value(member.structure.get()));
    if (layout->size() > project::kHighestOffset) {
        return fail(declaration.position, QStringLiteral("structure %1 has more than %2 bytes")
                                              .arg(structure)
                                              .arg(project::kHighestOffset));
    }
    if (layout->nesting() >= project::kDeepestNesting) {
        return fail(declaration.position,
                    QStringLiteral("found structures nested more than %1 deep")
                        .arg(project::kDeepestNesting));
    }
    return true;
}

bool TypeResolver::extendBase(const TypeSpec& type, Layout* layout)
{
    TypeSpec base;
    base.position = type.position;
    base.name = type.name;
    project::Variable variable;
    if (!resolveNamed(base, &variable))
        return false;
    if (!variable.structure || !variable.dimensions.isEmpty())
        return fail(type.position, QStringLiteral("%1 is no structure; only structures can be "
                                                  "extended")
                                       .arg(values::quoted(type.name)));
    const project::StructureType* structure = variable.structure.get();
    layout->startWith(*structure, m_alignments.value(structure), m_nesting.value(structure) - 1);
    return true;
}

/// `name`, with a number behind it where a type of that name exists.
QString TypeResolver::freeName(const QString& name)
{
    QString free = name;
    int& number = m_numbers[name.toLower()];
    while (m_types.contains(free.toLower()) || m_freeNames.contains(free.toLower()))
        free = name + QString::number(++number + 1);
    m_freeNames.insert(free.toLower());
    return free;
}

int TypeResolver::alignmentOf(const project::Variable& variable) const
{
    return alignmentWithin(variable, variable.structure ? kHighestAlignment : m_alignment);
}

/// Structures keep the layout that they have of their own, wherever they lie.
int TypeResolver::alignmentWithin(const project::Variable& variable, int largest) const
{
    if (variable.structure)
        return qMin(m_alignments.value(variable.structure.get()), largest);
    if (values::isBit(*variable.type))
        return 2;
    if (values::isText(*variable.type))
        return variable.type->format == values::ValueFormat::WideText ? qMin(2, largest) : 1;
    return qMin(variable.type->size, largest);
}

} // namespace plc::iec
