#ifndef PLC_PROJECT_SYMBOL_BUILDER_H
#define PLC_PROJECT_SYMBOL_BUILDER_H

#include <QtCore/QSet>
#include <QtCore/QString>

#include "project/symbols.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::project {

/// Makes the symbols of a program in code:
///
///     Expected<Symbols> symbols = SymbolBuilder()
///         .structure("Tank", 8).member("level", "REAL", 0).member("state", "INT", 4)
///         .scope("Plant").variable("tank", "Tank", 1, 0, {{1, 6}})
///                        .variable("name", "STRING(19)", 1, 48)
///         .build();
///
/// A type is the name of an IEC type, "STRING(n)" or "WSTRING(n)" with the capacity in characters,
/// or the name of a structure that stands before. After the first mistake the rest is passed over,
/// and build() tells it.
class PLC_HOST_EXPORT SymbolBuilder {
public:
    using Dimensions = QVector<ArrayDimension>;

    /// Begins a structure; an array of it has an element every `size` bytes.
    SymbolBuilder& structure(const QString& name, qint32 size);
    /// A member of the structure that was begun last, at this byte of it.
    SymbolBuilder& member(const QString& name, const QString& type, qint32 offset,
                          const Dimensions& dimensions = {});
    /// Begins a scope; labels of the one with the empty name begin with the dot.
    SymbolBuilder& scope(const QString& name);
    /// A variable of the scope that was begun last. `address` counts bytes of the memory area, of a
    /// BIT bits.
    SymbolBuilder& variable(const QString& name, const QString& type, int area, qint32 address,
                            const Dimensions& dimensions = {});

    /// All that was declared, or the first mistake.
    Expected<Symbols> build();

private:
    bool hasFailed() const { return !m_error.text.isEmpty(); }
    SymbolBuilder& fail(const QString& where, const QString& what);
    void endStructure();
    bool setType(Variable* variable, const QString& type);
    bool setDimensions(Variable* variable, const Dimensions& dimensions);
    bool declare(const QString& type, const Dimensions& dimensions, Variable* variable);

    Symbols m_symbols;
    std::shared_ptr<StructureType> m_structure; ///< While its members are declared.
    QSet<QString> m_names; ///< Of the members or variables of what was begun last.
    QString m_where;       ///< Label of what is declared, for m_error.
    Error m_error;
};

} // namespace plc::project

#endif
