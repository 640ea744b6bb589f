#include "project/declaration_reader.h"

#include <algorithm>
#include <limits>

#include "project/label_syntax.h"
#include "project/memory_layout.h"
#include "project/signal_reader.h"
#include "project/value_limits.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

constexpr qint64 kLowestBound = std::numeric_limits<qint32>::min();
// The driver is told the bound behind the last element, which must be a 32-bit number too.
constexpr qint64 kHighestBound = kHighestOffset - 1;

/// Counts of values go no further, however often structures multiply.
constexpr qint64 kMostCounted = Q_INT64_C(1000000000000000);

QString readName(const JsonNode& node)
{
    QString name = node.text();
    if (!isLabelName(name)) {
        node.failExpecting(
            QStringLiteral("a name without . [ ] , = quotes, blanks or control characters"));
    }
    return name;
}

using NamesSoFar = QHash<QString, JsonValue>;

/// Reports the second of two equal names.
void checkUnique(const JsonNode& nameNode, const QString& name, NamesSoFar* names)
{
    JsonValue& place = (*names)[name];
    if (!place.isMissing()) {
        nameNode.fail(
            QStringLiteral("the name %1 is taken by %2").arg(values::quoted(name), place.path()));
    }
    place = nameNode.value();
}

ArrayDimension readDimension(const JsonNode& node)
{
    const JsonNode::Elements bounds = node.elements();
    if (bounds.size() != 2) {
        node.fail(QStringLiteral("expected the lower and the upper bound, as in [1, 8]"));
        return {};
    }
    ArrayDimension dimension;
    dimension.lower = int((*bounds.begin()).integer(kLowestBound, kHighestBound));
    dimension.upper = int((*++bounds.begin()).integer(kLowestBound, kHighestBound));
    if (dimension.upper < dimension.lower) {
        node.fail(QStringLiteral("found the upper bound %1 below the lower bound %2")
                      .arg(dimension.upper)
                      .arg(dimension.lower));
        dimension.upper = dimension.lower;
    }
    return dimension;
}

QVector<ArrayDimension> readArray(const JsonNode& node)
{
    QVector<ArrayDimension> dimensions;
    const JsonNode::Elements list = node.elements();
    if (list.isEmpty() || list.size() > kMostDimensions) {
        node.fail(QStringLiteral("expected 1 to %1 dimensions, as in [[1, 8], [0, 3]]")
                      .arg(kMostDimensions));
        return dimensions;
    }
    qint64 count = 1;
    for (const JsonNode dimensionNode : list) {
        const ArrayDimension dimension = readDimension(dimensionNode);
        count *= qint64(dimension.upper) - dimension.lower + 1;
        if (count > kHighestOffset) {
            node.fail(QStringLiteral("found more than %1 elements").arg(kHighestOffset));
            return {};
        }
        dimensions.append(dimension);
    }
    return dimensions;
}

/// An element of a text array that is longer than the distance of the elements would lie over the
/// next one.
void checkTextFits(const JsonNode& node, const Variable& variable)
{
    if (variable.structure || !values::isText(*variable.type) || variable.dimensions.isEmpty())
        return;
    if (elementSize(variable) > kTextElementStride) {
        node.member("length").fail(
            QStringLiteral("found %1 bytes with the terminating zero; the elements of a %2 array "
                           "lie %3 bytes apart")
                .arg(elementSize(variable))
                .arg(QLatin1String(variable.type->name))
                .arg(kTextElementStride));
    }
}

void readLength(const JsonNode& node, const std::optional<JsonNode>& length, Variable* variable)
{
    if (length) {
        variable->stringLength = int(length->integer(1, kLongestText));
        return;
    }
    node.fail(QStringLiteral("key \"length\" (characters of the %1) is missing")
                  .arg(QLatin1String(variable->type->name)));
}

/// Variables that must not share memory, the scopes or the structure that they are declared in, and
/// the lists of the document that declare them.
struct Declared {
    std::vector<QVector<Variable>> variables;
    std::vector<QString> owners;
    std::vector<JsonNode> lists;

    void append(const QString& owner, const QVector<Variable>& members, const JsonNode& list)
    {
        variables.push_back(members);
        owners.push_back(owner);
        lists.push_back(list);
    }
};

/// One of them, counted through all lists.
class DeclaredVariable {
public:
    DeclaredVariable(const Declared& declared, int number) : m_declared(declared), m_index(number)
    {
        for (; m_index >= int(declared.variables[m_list].size()); ++m_list)
            m_index -= int(declared.variables[m_list].size());
    }

    QString path() const
    {
        return m_declared.lists[m_list].path() + QLatin1Char('/') + QString::number(m_index);
    }
    QString label() const { return m_declared.owners[m_list] + QLatin1Char('.') + variable().name; }
    bool isBit() const { return variable().type && values::isBit(*variable().type); }

private:
    const Variable& variable() const { return m_declared.variables[m_list][m_index]; }

    const Declared& m_declared;
    std::size_t m_list = 0;
    int m_index;
};

void checkNothingShared(const Declared& declared, DocumentErrors* errors)
{
    // Places are only as small as they should be where nothing was wrong so far.
    if (!errors->isEmpty())
        return;
    const std::optional<SharedMemory> shared = findSharedMemory(declared.variables);
    if (!shared)
        return;
    const DeclaredVariable first(declared, shared->first);
    const DeclaredVariable second(declared, shared->second);
    const QString rule = QStringLiteral(
        "; a bit counts in the 16-bit word whose high byte is at offset / 16 and whose low byte is "
        "behind it");
    if (shared->first == shared->second) {
        errors->report(first.path(), QStringLiteral("elements of %1 share byte %2 of memory%3")
                                         .arg(first.label())
                                         .arg(shared->byte)
                                         .arg(rule));
        return;
    }
    errors->report(
        second.path(),
        QStringLiteral("%1 and %2 (%3) share byte %4 of memory; move one, or mark the one that "
                       "lies there on purpose with \"overlay\": true%5")
            .arg(second.label(), first.label(), first.path())
            .arg(shared->byte)
            .arg(first.isBit() || second.isBit() ? rule : QString()));
}

const JsonKeys kMemberKeys = {"name", "type", "offset"};
const JsonKeys kScopeVariableKeys = {"name", "type", "area", "offset"};
const JsonKeys kOptionalKeys = {"array", "length", "unit", "description", "signal", "overlay"};

} // namespace

QString TextPool::textOf(const JsonNode& node)
{
    if (!node.value().isText())
        return node.text();
    QString& text = m_texts[node.value().utf8()];
    if (text.isNull())
        text = node.text();
    return text;
}

QVector<std::shared_ptr<const StructureType>> DeclarationReader::readStructures(
    const JsonNode& list)
{
    NamesSoFar names;
    QStringList order;
    for (const JsonNode node : list.elements()) {
        node.checkKeys({"name", "size", "members"}, {"description"});
        const JsonNode nameNode = node.member("name");
        const QString name = readName(nameNode);
        checkUnique(nameNode, name, &names);
        if (values::findIecType(name))
            nameNode.fail(
                QStringLiteral("%1 is the name of an IEC type").arg(values::quoted(name)));
        order.append(name);
        m_structures.insert(name, {node, nullptr, 0, 0});
    }
    for (const QString& name : order) {
        if (list.errors()->isEmpty() && !m_structures.value(name, {list, {}, 0, 0}).type)
            readStructure(name);
    }
    return m_finished;
}

void DeclarationReader::readStructure(const QString& name)
{
    const JsonNode node = m_structures.constFind(name)->node;
    const int outerDeepest = m_deepestMember;
    m_deepestMember = 0;
    m_underWay.append(name);
    auto type = std::make_shared<StructureType>();
    type->name = name;
    type->size = qint32(node.member("size").integer(1, kHighestOffset));
    if (node.has("description"))
        type->description = node.member("description").text();
    const JsonNode list = node.member("members");
    if (!readMembers(list, type.get()))
        return;
    Declared declared;
    declared.append(name, type->members, list);
    checkNothingShared(declared, list.errors());
    m_underWay.removeLast();
    qint64 values = 0;
    for (const Variable& member : type->members)
        values = std::min(values + countValues(member), kMostCounted);
    m_structures.insert(name, {node, type, m_deepestMember + 1, values});
    m_deepestMember = outerDeepest;
    m_finished.append(type);
}

/// Returns false where a member cannot be read at all.
bool DeclarationReader::readMembers(const JsonNode& list, StructureType* type)
{
    NamesSoFar names;
    const JsonNode::Elements members = list.elements();
    if (members.isEmpty())
        list.fail(QStringLiteral("expected at least one member"));
    for (const JsonNode memberNode : members) {
        const Variable member = readMember(memberNode);
        checkUnique(memberNode.member("name"), member.name, &names);
        if (!list.errors()->isEmpty())
            return false;
        if (transferEnd(member) > type->size) {
            memberNode.fail(QStringLiteral("%1 ends at byte %2, but structure %3 has %4 bytes")
                                .arg(values::quoted(member.name))
                                .arg(transferEnd(member))
                                .arg(values::quoted(type->name))
                                .arg(type->size));
        }
        type->members.append(member);
    }
    return true;
}

std::shared_ptr<const StructureType> DeclarationReader::useStructure(const JsonNode& typeNode)
{
    const QString name = typeNode.value().text();
    if (m_underWay.contains(name)) {
        const QStringList circle = m_underWay.mid(m_underWay.indexOf(name)) << name;
        typeNode.fail(QStringLiteral("structure %1 contains itself: %2")
                          .arg(values::quoted(name), circle.join(QStringLiteral(" > "))));
        return nullptr;
    }
    const QString tooDeep =
        QStringLiteral("found structures nested more than %1 deep").arg(kDeepestNesting);
    if (m_underWay.size() >= kDeepestNesting) {
        typeNode.fail(tooDeep);
        return nullptr;
    }
    if (!m_structures.constFind(name)->type)
        readStructure(name);
    const Structure used = *m_structures.constFind(name);
    m_deepestMember = std::max(m_deepestMember, used.nesting);
    if (m_deepestMember + int(m_underWay.size()) > kDeepestNesting)
        typeNode.fail(tooDeep);
    return used.type;
}

QVector<ScopeDefinition> DeclarationReader::readScopes(const JsonNode& list)
{
    QVector<ScopeDefinition> scopes;
    NamesSoFar names;
    Declared declared;
    for (const JsonNode node : list.elements()) {
        const ScopeDefinition scope = readScope(node);
        checkUnique(node.member("name"), scope.name, &names);
        if (!list.errors()->isEmpty())
            return {};
        checkCount(scope, node);
        declared.append(scope.name, scope.variables, node.member("variables"));
        scopes.append(scope);
    }
    if (m_rule == SharedMemoryRule::Refused)
        checkNothingShared(declared, list.errors());
    return scopes;
}

/// 1 for a value of an elementary type and for an array of them.
qint64 DeclarationReader::countValues(const Variable& variable) const
{
    return variable.structure ? m_structures.constFind(variable.structure->name)->values : 1;
}

/// A few lines can declare more values than can ever be listed, each structure holding several of
/// the one before.
void DeclarationReader::checkCount(const ScopeDefinition& scope, const JsonNode& node)
{
    for (int index = 0; index < int(scope.variables.size()); ++index) {
        const Variable& variable = scope.variables[index];
        const qint64 count = countValues(variable);
        m_values = std::min(m_values + count, kMostCounted);
        if (m_values <= kMostDeclaredValues)
            continue;
        node.errors()->report(
            QStringLiteral("%1/variables/%2").arg(node.path()).arg(index),
            QStringLiteral("%1.%2 stands for %3%4 values, its structures taken apart, and the "
                           "project with it for more than the %5 that it may have")
                .arg(scope.name, variable.name,
                     count == kMostCounted ? QStringLiteral("at least ") : QString())
                .arg(count)
                .arg(kMostDeclaredValues));
        return;
    }
}

ScopeDefinition DeclarationReader::readScope(const JsonNode& node)
{
    node.checkKeys({"name", "variables"}, {"description"});
    ScopeDefinition scope;
    scope.name = node.member("name").text();
    // Global variables have no scope name: their labels begin with the dot.
    if (!scope.name.isEmpty())
        readName(node.member("name"));
    NamesSoFar names;
    const JsonNode::Elements variables = node.member("variables").elements();
    const int count = variables.size();
    scope.variables.reserve(count);
    names.reserve(count);
    for (const JsonNode variableNode : variables) {
        scope.variables.append(readScopeVariable(variableNode));
        checkUnique(variableNode.member("name"), scope.variables.last().name, &names);
        if (!node.errors()->isEmpty())
            break;
    }
    return scope;
}

Variable DeclarationReader::readMember(const JsonNode& node)
{
    Variable member = readVariable(node, kMemberKeys);
    if (member.type && values::isBit(*member.type)) {
        node.member("type").fail(
            QStringLiteral("found \"BIT\"; members have byte offsets, use BOOL or a WORD"));
    }
    return member;
}

Variable DeclarationReader::readScopeVariable(const JsonNode& node)
{
    Variable variable = readVariable(node, kScopeVariableKeys);
    variable.area = int(node.member("area").integer(0, kHighestAreaIndex));
    if (node.errors()->isEmpty())
        checkArea(node, variable);
    return variable;
}

Variable DeclarationReader::readVariable(const JsonNode& node, const JsonKeys& required)
{
    OptionalMembers options(node, node.checkKeys(required, kOptionalKeys));
    Variable variable;
    variable.name = readName(node.member("name"));
    variable.offset = qint32(node.member("offset").integer(0, kHighestOffset));
    if (const std::optional<JsonNode> array = options.take("array"))
        variable.dimensions = readArray(*array);
    if (const std::optional<JsonNode> unit = options.take("unit"))
        variable.unit = m_texts.textOf(*unit);
    if (const std::optional<JsonNode> description = options.take("description"))
        variable.description = m_texts.textOf(*description);
    if (const std::optional<JsonNode> overlay = options.take("overlay"))
        variable.overlay = overlay->boolean();
    readType(node, options.take("length"), &variable);
    if (!node.errors()->isEmpty())
        return variable;
    checkTextFits(node, variable);
    if (const std::optional<JsonNode> signal = options.take("signal"))
        variable.signal = std::make_shared<const Signal>(readSignal(*signal, variable));
    return variable;
}

void DeclarationReader::readType(const JsonNode& node, const std::optional<JsonNode>& length,
                                 Variable* variable)
{
    const JsonNode typeNode = node.member("type");
    variable->type = values::findIecType(typeNode.value().utf8());
    const QString name = variable->type ? QString() : typeNode.text();
    if (variable->type && values::isText(*variable->type))
        readLength(node, length, variable);
    else if (length)
        length->fail(QStringLiteral("only STRING and WSTRING have a length"));
    if (variable->type || !node.errors()->isEmpty())
        return;
    if (m_structures.contains(name)) {
        variable->structure = useStructure(typeNode);
        return;
    }
    QStringList known = m_structures.keys();
    for (const values::IecType* type = values::iecTypes(); type->name; ++type)
        known.append(QString::fromLatin1(type->name));
    typeNode.failExpecting(QStringLiteral("an IEC type or a structure of this file%1")
                               .arg(values::nearestNameHint(name, known)));
}

void DeclarationReader::checkArea(const JsonNode& node, const Variable& variable) const
{
    for (const MemoryArea& area : m_areas) {
        if (area.index != variable.area)
            continue;
        if (transferEnd(variable) > area.size) {
            node.fail(QStringLiteral("%1 ends at byte %2, but area %3 has %4 bytes")
                          .arg(values::quoted(variable.name))
                          .arg(transferEnd(variable))
                          .arg(area.index)
                          .arg(area.size));
        }
        return;
    }
    QStringList known;
    for (const MemoryArea& area : m_areas)
        known.append(QString::number(area.index));
    node.member("area").failExpecting(
        QStringLiteral("one of the areas of this file: %1").arg(known.join(QLatin1String(", "))));
}

} // namespace plc::project
