#ifndef PLC_PROJECT_SYMBOL_WALK_H
#define PLC_PROJECT_SYMBOL_WALK_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <iterator>
#include <vector>

#include "project/symbols.h"
#include "values/export.h"

namespace plc::project {

/// A variable of an elementary type, or an array of them, as the project declares it.
struct SymbolEntry {
    QString pattern;    ///< The label with declared bounds: Plant.tank[1..6].level
    QString firstLabel; ///< The label of the first element: Plant.tank[1].level
    const Variable* variable = nullptr;
};

/// The entries of a project, which must outlive this unchanged. They are made one at a time:
/// structures of structures have far more of them than declarations.
class PLC_HOST_EXPORT SymbolEntries {
public:
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = SymbolEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = const SymbolEntry*;
        using reference = const SymbolEntry&;

        /// The end.
        Iterator() = default;
        explicit Iterator(const Symbols& symbols) : m_symbols(&symbols) { findNext(); }

        reference operator*() const { return m_entry; }
        pointer operator->() const { return &m_entry; }
        Iterator& operator++()
        {
            findNext();
            return *this;
        }
        bool operator!=(const Iterator& other) const
        {
            return m_entry.variable != other.m_entry.variable;
        }

    private:
        /// A scope or a structure, part of the way through.
        struct Level {
            const QVector<Variable>* variables;
            int next;
            QString pattern;
            QString firstLabel;
        };

        void findNext();
        bool enterNextScope();

        const Symbols* m_symbols = nullptr;
        int m_nextScope = 0;
        std::vector<Level> m_levels; ///< The outermost first.
        SymbolEntry m_entry;         ///< Without a variable at the end.
    };

    explicit SymbolEntries(const Symbols& symbols) : m_symbols(symbols) {}

    Iterator begin() const { return Iterator(m_symbols); }
    Iterator end() const { return {}; }

private:
    const Symbols& m_symbols;
};

/// All of them, in the order of their declaration, structures taken apart.
inline SymbolEntries symbolEntries(const Symbols& symbols)
{
    return SymbolEntries(symbols);
}

/// The declared bounds as a label has them, "[1..6]"; nothing for what is no array.
PLC_HOST_EXPORT QString boundsText(const Variable& variable);

} // namespace plc::project

#endif
