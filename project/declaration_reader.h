#ifndef PLC_PROJECT_DECLARATION_READER_H
#define PLC_PROJECT_DECLARATION_READER_H

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <map>
#include <optional>
#include <string_view>

#include "project/json_node.h"
#include "project/project.h"

namespace plc::project {

/// Structures may nest this deep; label resolution and records recurse once for each level.
constexpr int kDeepestNesting = 16;

constexpr int kMostDimensions = 8;
constexpr int kLongestText = 32000; ///< Characters of a STRING or WSTRING.

/// Gives texts of which many are equal, such as units, one place in memory. The document must
/// outlive it.
class TextPool {
public:
    QString textOf(const JsonNode& node);

private:
    std::map<std::string_view, QString> m_texts; ///< By their UTF-8 in the document.
};

/// Reads and checks the structures and scopes of a project document.
class DeclarationReader {
public:
    DeclarationReader(const QVector<MemoryArea>& areas, SharedMemoryRule rule)
        : m_areas(areas), m_rule(rule)
    {
    }

    /// Structures in an order in which each stands behind those it is made of.
    QVector<std::shared_ptr<const StructureType>> readStructures(const JsonNode& list);

    /// Call after readStructures().
    QVector<ScopeDefinition> readScopes(const JsonNode& list);

private:
    struct Structure {
        JsonNode node;
        std::shared_ptr<const StructureType> type;
        int nesting = 0;
        qint64 values = 0; ///< Of an elementary type, all structures taken apart.
    };

    void readStructure(const QString& name);
    bool readMembers(const JsonNode& list, StructureType* type);
    std::shared_ptr<const StructureType> useStructure(const JsonNode& typeNode);
    ScopeDefinition readScope(const JsonNode& node);
    Variable readMember(const JsonNode& node);
    Variable readScopeVariable(const JsonNode& node);
    Variable readVariable(const JsonNode& node, const JsonKeys& required);
    void readType(const JsonNode& node, const std::optional<JsonNode>& length, Variable* variable);
    void checkArea(const JsonNode& node, const Variable& variable) const;
    qint64 countValues(const Variable& variable) const;
    void checkCount(const ScopeDefinition& scope, const JsonNode& node);

    QVector<MemoryArea> m_areas;
    SharedMemoryRule m_rule; ///< For variables of scopes.
    QHash<QString, Structure> m_structures;
    QVector<std::shared_ptr<const StructureType>> m_finished;
    QStringList m_underWay; ///< Structures being read, the outermost first.
    TextPool m_texts;
    int m_deepestMember = 0;
    qint64 m_values = 0; ///< Of the scopes read so far.
};

} // namespace plc::project

#endif
