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

constexpr qint64 kHighestOffset = std::numeric_limits<qint32>::max();
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

/// Reports the second of two equal names; `first` are the names with their paths.
void checkUnique(const JsonNode& nameNode, QHash<QString, QString>* first)
{
    const QString name = nameNode.value().toString();
    if (first->contains(name)) {
        nameNode.fail(QStringLiteral("the name %1 is taken by %2")
                          .arg(values::quoted(name), first->value(name)));
    }
    first->insert(name, nameNode.path());
}

ArrayDimension readDimension(const JsonNode& node)
{
    const QVector<JsonNode> bounds = node.elements();
    if (bounds.size() != 2) {
        node.fail(QStringLiteral("expected the lower and the upper bound, as in [1, 8]"));
        return {};
    }
    ArrayDimension dimension;
    dimension.lower = int(bounds[0].integer(kLowestBound, kHighestBound));
    dimension.upper = int(bounds[1].integer(kLowestBound, kHighestBound));
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
    const QVector<JsonNode> list = node.elements();
    if (list.isEmpty() || list.size() > kMostDimensions) {
        node.fail(QStringLiteral("expected 1 to %1 dimensions, as in [[1, 8], [0, 3]]")
                      .arg(kMostDimensions));
        return dimensions;
    }
    qint64 count = 1;
    for (const JsonNode& dimensionNode : list) {
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

void checkNothingShared(const JsonNode& list, const QVector<Variable>& variables,
                        const QVector<QString>& paths, const QStringList& labels)
{
    // Places are only as small as they should be where nothing was wrong so far.
    if (!list.errors()->isEmpty())
        return;
    const std::optional<SharedMemory> shared = findSharedMemory(variables);
    if (!shared)
        return;
    const QString rule = QStringLiteral(
        "; a bit counts in the 16-bit word whose high byte is at offset / 16 and whose low byte is "
        "behind it");
    const auto isBitVariable = [&](int index) {
        return variables[index].type != nullptr && values::isBit(*variables[index].type);
    };
    const bool anyBit = isBitVariable(shared->first) || isBitVariable(shared->second);
    if (shared->first == shared->second) {
        list.errors()->report(paths[shared->first],
                              QStringLiteral("elements of %1 share byte %2 of memory%3")
                                  .arg(labels[shared->first])
                                  .arg(shared->byte)
                                  .arg(rule));
        return;
    }
    list.errors()->report(
        paths[shared->second],
        QStringLiteral("%1 and %2 (%3) share byte %4 of memory; move one, or mark the one that "
                       "lies there on purpose with \"overlay\": true%5")
            .arg(labels[shared->second], labels[shared->first], paths[shared->first])
            .arg(shared->byte)
            .arg(anyBit ? rule : QString()));
}

const QStringList kVariableKeys = {QStringLiteral("array"),  QStringLiteral("length"),
                                   QStringLiteral("unit"),   QStringLiteral("description"),
                                   QStringLiteral("signal"), QStringLiteral("overlay")};

} // namespace

QVector<std::shared_ptr<const StructureType>> DeclarationReader::readStructures(
    const JsonNode& list)
{
    QHash<QString, QString> names;
    QStringList order;
    for (const JsonNode& node : list.elements()) {
        node.checkKeys({QStringLiteral("name"), QStringLiteral("size"), QStringLiteral("members")},
                       {QStringLiteral("description")});
        const JsonNode nameNode = node.member("name");
        const QString name = readName(nameNode);
        checkUnique(nameNode, &names);
        if (values::findIecType(name) != nullptr)
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
    QHash<QString, QString> names;
    QVector<QString> paths;
    QStringList labels;
    const JsonNode list = node.member("members");
    const QVector<JsonNode> members = list.elements();
    if (members.isEmpty())
        list.fail(QStringLiteral("expected at least one member"));
    for (const JsonNode& memberNode : members) {
        const Variable member = readMember(memberNode);
        checkUnique(memberNode.member("name"), &names);
        if (!list.errors()->isEmpty())
            return;
        if (transferEnd(member) > type->size) {
            memberNode.fail(QStringLiteral("%1 ends at byte %2, but structure %3 has %4 bytes")
                                .arg(values::quoted(member.name))
                                .arg(transferEnd(member))
                                .arg(values::quoted(name))
                                .arg(type->size));
        }
        type->members.append(member);
        paths.append(memberNode.path());
        labels.append(name + QLatin1Char('.') + member.name);
    }
    checkNothingShared(list, type->members, paths, labels);
    m_underWay.removeLast();
    qint64 values = 0;
    for (const Variable& member : type->members)
        values = std::min(values + countValues(member), kMostCounted);
    m_structures.insert(name, {node, type, m_deepestMember + 1, values});
    m_deepestMember = outerDeepest;
    m_finished.append(type);
}

std::shared_ptr<const StructureType> DeclarationReader::useStructure(const JsonNode& typeNode)
{
    const QString name = typeNode.value().toString();
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
    QHash<QString, QString> names;
    QVector<Variable> all;
    QVector<QString> paths;
    QStringList labels;
    for (const JsonNode& node : list.elements()) {
        const ScopeDefinition scope = readScope(node);
        checkUnique(node.member("name"), &names);
        if (!list.errors()->isEmpty())
            return {};
        checkCount(scope, node);
        for (int index = 0; index < int(scope.variables.size()); ++index) {
            all.append(scope.variables[index]);
            paths.append(QStringLiteral("%1/variables/%2").arg(node.path()).arg(index));
            labels.append(scope.name + QLatin1Char('.') + scope.variables[index].name);
        }
        scopes.append(scope);
    }
    if (m_rule == SharedMemoryRule::Refused)
        checkNothingShared(list, all, paths, labels);
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
    node.checkKeys({QStringLiteral("name"), QStringLiteral("variables")},
                   {QStringLiteral("description")});
    ScopeDefinition scope;
    scope.name = node.member("name").text();
    // Global variables have no scope name: their labels begin with the dot.
    if (!scope.name.isEmpty())
        readName(node.member("name"));
    QHash<QString, QString> names;
    for (const JsonNode& variableNode : node.member("variables").elements()) {
        scope.variables.append(readScopeVariable(variableNode));
        checkUnique(variableNode.member("name"), &names);
        if (!node.errors()->isEmpty())
            break;
    }
    return scope;
}

Variable DeclarationReader::readMember(const JsonNode& node)
{
    node.checkKeys({QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("offset")},
                   kVariableKeys);
    Variable member = readVariable(node);
    if (member.type != nullptr && values::isBit(*member.type)) {
        node.member("type").fail(
            QStringLiteral("found \"BIT\"; members have byte offsets, use BOOL or a WORD"));
    }
    return member;
}

Variable DeclarationReader::readScopeVariable(const JsonNode& node)
{
    node.checkKeys({QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("area"),
                    QStringLiteral("offset")},
                   kVariableKeys);
    Variable variable = readVariable(node);
    variable.area = int(node.member("area").integer(0, kHighestAreaIndex));
    if (node.errors()->isEmpty())
        checkArea(node, variable);
    return variable;
}

Variable DeclarationReader::readVariable(const JsonNode& node)
{
    Variable variable;
    variable.name = readName(node.member("name"));
    variable.offset = qint32(node.member("offset").integer(0, kHighestOffset));
    if (node.has("array"))
        variable.dimensions = readArray(node.member("array"));
    if (node.has("unit"))
        variable.unit = node.member("unit").text();
    if (node.has("description"))
        variable.description = node.member("description").text();
    if (node.has("overlay"))
        variable.overlay = node.member("overlay").boolean();
    readType(node, &variable);
    if (!node.errors()->isEmpty())
        return variable;
    checkTextFits(node, variable);
    if (node.has("signal"))
        variable.signal =
            std::make_shared<const Signal>(readSignal(node.member("signal"), variable));
    return variable;
}

void DeclarationReader::readType(const JsonNode& node, Variable* variable)
{
    const JsonNode typeNode = node.member("type");
    const QString name = typeNode.text();
    variable->type = values::findIecType(name);
    const bool isTextType = variable->type != nullptr && values::isText(*variable->type);
    if (isTextType && !node.has("length"))
        node.fail(QStringLiteral("key \"length\" (characters of the %1) is missing").arg(name));
    else if (isTextType)
        variable->stringLength = int(node.member("length").integer(1, kLongestText));
    else if (node.has("length"))
        node.member("length").fail(QStringLiteral("only STRING and WSTRING have a length"));
    if (variable->type != nullptr || !node.errors()->isEmpty())
        return;
    if (m_structures.contains(name)) {
        variable->structure = useStructure(typeNode);
        return;
    }
    QStringList known = m_structures.keys();
    for (const values::IecType* type = values::iecTypes(); type->name != nullptr; ++type)
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
