#ifndef PLC_IEC_TYPE_RESOLVER_H
#define PLC_IEC_TYPE_RESOLVER_H

#include <QtCore/QHash>
#include <QtCore/QSet>

#include "iec/constants.h"
#include "project/project.h"

namespace plc::iec {

/// Values of 8 bytes lie at multiples of 4 unless the controller is set otherwise.
constexpr int kUsualAlignment = 4;

/// Whether the values of this type are numbers, which may have a unit.
bool hasUnit(const project::Variable& variable);

/// Makes types of a project out of declared ones: looks names up, works bounds out and lays
/// structures out in memory. Each type of `n` bytes lies at a multiple of `n`, or of `alignment` if
/// that is less; texts, arrays and structures at that of what they are made of. In a structure with
/// a pack_mode, that takes the place of `alignment`.
class TypeResolver {
public:
    /// All of these must outlive the resolver.
    TypeResolver(const Declarations& declarations, Constants* constants, int alignment,
                 Diagnostics* diagnostics);

    /// Fills in type, structure, text length and dimensions of `variable`. `scope` is where
    /// constants are looked up first; `name` names a structure that has no name of its own. Returns
    /// false after reporting what is wrong, be it before, with another variable of the same type.
    bool resolve(const TypeSpec& type, const QString& scope, const QString& name,
                 project::Variable* variable);

    /// Whether the type, or what the array is of, is one of these files or an elementary one.
    bool isKnown(const TypeSpec& type) const;

    /// What a type that is not known is, or what an array is of, and what to do.
    QString unknownText(const TypeSpec& type) const;

    /// What the place of a resolved variable must be a multiple of.
    int alignmentOf(const project::Variable& variable) const;

    /// The structures in use, each behind those that its members are made of.
    QVector<std::shared_ptr<const project::StructureType>> structures() const
    {
        return m_structures;
    }

private:
    struct Entry {
        const TypeDefinition* definition = nullptr;
        project::Variable
            resolved; ///< What a variable of this type has: type, structure and dimensions.
        bool isResolved = false;
        bool isBroken = false;
    };
    class Layout;

    bool resolveNamed(const TypeSpec& type, project::Variable* variable);
    bool resolveDefined(const QString& key, const TypeSpec& type, project::Variable* variable);
    bool resolveDefinition(const TypeDefinition& definition, project::Variable* variable);
    bool resolveText(const TypeSpec& type, const QString& scope, project::Variable* variable);
    bool resolveArray(const TypeSpec& type, const QString& scope, const QString& name,
                      project::Variable* variable);
    bool resolveRange(const Range& range, const QString& scope, project::Variable* variable);
    bool checkArray(const TypeSpec& type, const project::Variable& variable);
    std::shared_ptr<const project::StructureType> layOut(const TypeSpec& type, const QString& scope,
                                                         const QString& name,
                                                         const QString& description);
    bool appendMember(const Declaration& declaration, const QString& scope, Layout* layout);
    bool extendBase(const TypeSpec& type, Layout* layout);
    QString freeName(const QString& name);
    int alignmentWithin(const project::Variable& variable, int largest) const;
    bool fail(const Position& position, const QString& text);
    QStringList typeNames() const;

    Constants* m_constants;
    const int m_alignment;
    Diagnostics* m_diagnostics;
    QSet<QString> m_functionBlocks; ///< Names, in lower case.
    QHash<QString, Entry> m_types;  ///< By names in lower case.
    QVector<std::shared_ptr<const project::StructureType>> m_structures;
    QSet<QString> m_freeNames;     ///< Given to structures without a name; in lower case.
    QHash<QString, int> m_numbers; ///< Put behind such a name last.
    QHash<const project::StructureType*, int> m_alignments;
    QHash<const project::StructureType*, int> m_nesting; ///< Structures in each other.
    QStringList m_underWay; ///< Types being resolved, the outermost first.
};

} // namespace plc::iec

#endif
