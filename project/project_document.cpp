#include "project/project_document.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

#include <algorithm>

#include "values/iec_types.h"
#include "values/visible_text.h"

namespace plc::project {
namespace {

constexpr char kName[] = "name";
constexpr char kSize[] = "size";

const QStringList kKeyOrder = {
    QStringLiteral("$schema"),  QStringLiteral("name"),      QStringLiteral("label"),
    QStringLiteral("index"),    QStringLiteral("address"),   QStringLiteral("port"),
    QStringLiteral("kind"),     QStringLiteral("type"),      QStringLiteral("length"),
    QStringLiteral("array"),    QStringLiteral("area"),      QStringLiteral("offset"),
    QStringLiteral("size"),     QStringLiteral("unit"),      QStringLiteral("description"),
    QStringLiteral("overlay"),  QStringLiteral("signal"),    QStringLiteral("plc"),
    QStringLiteral("settings"), QStringLiteral("areas"),     QStringLiteral("structures"),
    QStringLiteral("scopes"),   QStringLiteral("variables"), QStringLiteral("members"),
    QStringLiteral("cyclic")};

/// What a variable keeps when its declaration says nothing of it.
const QStringList kKeptKeys = {QStringLiteral("unit"), QStringLiteral("description"),
                               QStringLiteral("signal"), QStringLiteral("overlay")};

/// Lists of which each element has a line of its own.
const QStringList kLineLists = {QStringLiteral("areas"),   QStringLiteral("structures"),
                                QStringLiteral("scopes"),  QStringLiteral("variables"),
                                QStringLiteral("members"), QStringLiteral("cyclic")};

QJsonArray arrayBounds(const QVector<ArrayDimension>& dimensions)
{
    QJsonArray bounds;
    for (const ArrayDimension& dimension : dimensions)
        bounds.append(QJsonArray{dimension.lower, dimension.upper});
    return bounds;
}

void insertText(const char* key, const QString& text, QJsonObject* object)
{
    if (!text.isEmpty())
        object->insert(QLatin1String(key), text);
}

QJsonObject variableObject(const Variable& variable)
{
    QJsonObject object;
    object.insert(QLatin1String(kName), variable.name);
    object.insert(QStringLiteral("type"), variable.structure
                                              ? variable.structure->name
                                              : QString::fromLatin1(variable.type->name));
    if (!variable.structure && values::isText(*variable.type))
        object.insert(QStringLiteral("length"), variable.stringLength);
    if (!variable.dimensions.isEmpty())
        object.insert(QStringLiteral("array"), arrayBounds(variable.dimensions));
    object.insert(QStringLiteral("offset"), variable.offset);
    insertText("unit", variable.unit, &object);
    insertText("description", variable.description, &object);
    if (variable.overlay)
        object.insert(QStringLiteral("overlay"), true);
    return object;
}

QJsonObject structureObject(const StructureType& structure)
{
    QJsonArray members;
    for (const Variable& member : structure.members)
        members.append(variableObject(member));
    QJsonObject object;
    object.insert(QLatin1String(kName), structure.name);
    object.insert(QLatin1String(kSize), structure.size);
    insertText("description", structure.description, &object);
    object.insert(QStringLiteral("members"), members);
    return object;
}

QJsonObject scopeObject(const ScopeDefinition& scope)
{
    QJsonArray variables;
    for (const Variable& variable : scope.variables) {
        QJsonObject object = variableObject(variable);
        object.insert(QStringLiteral("area"), variable.area);
        variables.append(object);
    }
    QJsonObject object;
    object.insert(QLatin1String(kName), scope.name);
    object.insert(QStringLiteral("variables"), variables);
    return object;
}

/// Of the same value of `key`, the new object with what the old one had and the new one lacks.
using Join = QJsonObject (*)(const QJsonObject& older, const QJsonObject& newer);

/// Puts `newer` in place of the elements that have the same value of `key`, or behind all.
void mergeList(const char* key, const QJsonArray& newer, Join join, QJsonArray* list)
{
    QHash<QString, int> positions;
    const auto identify = [key](const QJsonValue& element) {
        return element.toObject().value(QLatin1String(key)).toVariant().toString();
    };
    for (int i = 0; i < int(list->size()); ++i)
        positions.insert(identify(list->at(i)), i);
    for (const QJsonValue& element : newer) {
        const int position = positions.value(identify(element), -1);
        if (position < 0)
            list->append(element);
        else
            list->replace(position, join(list->at(position).toObject(), element.toObject()));
    }
}

void mergeMember(const char* list, const char* key, const QJsonArray& newer, Join join,
                 QJsonObject* object)
{
    QJsonArray merged = object->value(QLatin1String(list)).toArray();
    mergeList(key, newer, join, &merged);
    object->insert(QLatin1String(list), merged);
}

QJsonObject joinVariables(const QJsonObject& older, const QJsonObject& newer)
{
    QJsonObject joined = newer;
    for (const QString& key : kKeptKeys) {
        if (older.contains(key) && !newer.contains(key))
            joined.insert(key, older.value(key));
    }
    return joined;
}

/// Members of the older structure that the newer one lacks are gone.
QJsonObject joinStructures(const QJsonObject& older, const QJsonObject& newer)
{
    QHash<QString, QJsonObject> members;
    const QJsonArray olderMembers = older.value(QLatin1String("members")).toArray();
    for (const QJsonValue& member : olderMembers)
        members.insert(member.toObject().value(QLatin1String(kName)).toString(), member.toObject());
    QJsonArray joined;
    const QJsonArray newerMembers = newer.value(QLatin1String("members")).toArray();
    for (const QJsonValue& member : newerMembers) {
        const QString name = member.toObject().value(QLatin1String(kName)).toString();
        joined.append(joinVariables(members.value(name), member.toObject()));
    }
    QJsonObject structure = newer;
    if (older.contains(QLatin1String("description")) &&
        !newer.contains(QLatin1String("description")))
        structure.insert(QStringLiteral("description"), older.value(QLatin1String("description")));
    structure.insert(QStringLiteral("members"), joined);
    return structure;
}

QJsonObject joinScopes(const QJsonObject& older, const QJsonObject& newer)
{
    QJsonObject scope = older;
    mergeMember("variables", kName, newer.value(QLatin1String("variables")).toArray(),
                joinVariables, &scope);
    return scope;
}

QJsonObject joinAreas(const QJsonObject& older, const QJsonObject& newer)
{
    QJsonObject area = older;
    const QLatin1String size(kSize);
    area.insert(size, qMax(older.value(size).toDouble(), newer.value(size).toDouble()));
    return area;
}

/// Writes values as text: nested lists of lines, everything else in one line.
class Writer {
public:
    QByteArray text(const QJsonObject& document)
    {
        writeObject(document, true);
        return m_text + '\n';
    }

private:
    void newLine() { m_text += '\n' + QByteArray(2 * m_depth, ' '); }

    void writeObject(const QJsonObject& object, bool isInLines)
    {
        QStringList keys = object.keys();
        std::stable_sort(keys.begin(), keys.end(),
                         [](const QString& a, const QString& b) { return rank(a) < rank(b); });
        m_text += '{';
        m_depth += isInLines ? 1 : 0;
        for (int i = 0; i < int(keys.size()); ++i) {
            if (i > 0)
                m_text += isInLines ? "," : ", ";
            if (isInLines)
                newLine();
            writeScalar(keys[i]);
            m_text += ": ";
            writeMember(keys[i], object.value(keys[i]));
        }
        m_depth -= isInLines ? 1 : 0;
        if (isInLines)
            newLine();
        m_text += '}';
    }
    static int rank(const QString& key)
    {
        const int known = int(kKeyOrder.indexOf(key));
        return known < 0 ? int(kKeyOrder.size()) : known;
    }
    void writeMember(const QString& key, const QJsonValue& value)
    {
        if (!value.isArray() || !kLineLists.contains(key) || value.toArray().isEmpty())
            return writeValue(value);
        m_text += '[';
        ++m_depth;
        const QJsonArray list = value.toArray();
        for (int i = 0; i < int(list.size()); ++i) {
            m_text += i > 0 ? "," : "";
            newLine();
            writeValue(list.at(i));
        }
        --m_depth;
        newLine();
        m_text += ']';
    }
    void writeValue(const QJsonValue& value)
    {
        if (value.isObject())
            return writeObject(value.toObject(), false);
        if (!value.isArray())
            return writeScalar(value);
        const QJsonArray list = value.toArray();
        m_text += '[';
        for (int i = 0; i < int(list.size()); ++i) {
            m_text += i > 0 ? ", " : "";
            writeValue(list.at(i));
        }
        m_text += ']';
    }
    void writeScalar(const QJsonValue& value)
    {
        const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        // Escapes of JSON, which read back as what they stand for.
        m_text += values::visibleText(QString::fromUtf8(list.mid(1, list.size() - 2))).toUtf8();
    }

    QByteArray m_text;
    int m_depth = 0;
};

} // namespace

QJsonObject projectDocument(const QString& name, const Project& symbols)
{
    QJsonObject document;
    document.insert(QLatin1String(kName), name);
    document.insert(QStringLiteral("areas"), QJsonArray());
    document.insert(QStringLiteral("scopes"), QJsonArray());
    mergeSymbols(symbols, &document);
    return document;
}

void mergeSymbols(const Project& symbols, QJsonObject* document)
{
    QJsonArray areas, structures, scopes;
    for (const MemoryArea& area : symbols.areas)
        areas.append(QJsonObject{{QStringLiteral("index"), area.index},
                                 {QStringLiteral("size"), area.size}});
    for (const std::shared_ptr<const StructureType>& structure : symbols.structures)
        structures.append(structureObject(*structure));
    for (const ScopeDefinition& scope : symbols.scopes)
        scopes.append(scopeObject(scope));
    mergeMember("areas", "index", areas, joinAreas, document);
    if (!structures.isEmpty())
        mergeMember("structures", kName, structures, joinStructures, document);
    mergeMember("scopes", kName, scopes, joinScopes, document);
}

QByteArray documentText(const QJsonObject& document)
{
    return Writer().text(document);
}

} // namespace plc::project
