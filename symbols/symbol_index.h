#ifndef PLC_SYMBOLS_SYMBOL_INDEX_H
#define PLC_SYMBOLS_SYMBOL_INDEX_H

#include "plc_driver.h"
#include "symbols/name_index.h"

namespace plc {

/// Finds the variables of the scopes in the symbol table.
///
/// Made when the symbol list is handed in: insert() follows each record that goes into the table.
class SymbolIndex {
public:
    /// A variable of a scope: what most resolutions need of it, and where its record is.
    struct Variable {
        qint32 memberIndex = 0;
        qint32 address = 0;
        qint32 areaIndex = 0;
        quint16 typeFlags = 0;
        bool hasArea = false;
    };

    /// One scope of the table and its variables by name.
    class Scope {
    public:
        explicit Scope(const QString& name) : m_name(name) {}
        /// Takes the variables of `record`, in place of those it had.
        void assign(const Label_Type_Info& record);
        /// False for a scope whose record has no `typeDef`.
        bool hasType() const { return !m_typeDef.isEmpty(); }
        /// The variable of this name among the first `memberCount`, or null.
        const Variable* findVariable(const LabelText& name) const { return m_variables.find(name); }
        /// Begins to load what findVariable() will look at.
        void prefetchVariable(const LabelText& name) const { m_variables.prefetch(name); }
        const Label_Type_Info& recordOf(const Variable& variable) const
        {
            return m_typeDef.at(0).members.at(variable.memberIndex);
        }

    private:
        friend class SymbolIndex;
        Q_DISABLE_COPY(Scope)

        const QString m_name;
        QList<Label_Type_Info> m_typeDef; ///< Shares the host's records and keeps them alive.
        NameIndex<Variable> m_variables;
    };

    SymbolIndex() = default;
    ~SymbolIndex();

    /// Adds the scope `record`, or replaces the one of the same name.
    void insert(const Label_Type_Info& record);
    /// The scope of this name, or null.
    const Scope* findScope(const LabelText& name) const
    {
        Scope* const* scope = m_scopesByName.find(name);
        return scope ? *scope : nullptr;
    }

private:
    Q_DISABLE_COPY(SymbolIndex)

    QVector<Scope*> m_scopes;
    NameIndex<Scope*> m_scopesByName;
};

} // namespace plc

#endif
