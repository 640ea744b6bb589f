#ifndef PLC_SYMBOLS_SYMBOL_INDEX_H
#define PLC_SYMBOLS_SYMBOL_INDEX_H

#include <QtCore/QHash>
#include <QtCore/QVector>

#include "driver/plc_driver.h"
#include "symbols/name_index.h"

namespace plc {

/// The host's top-level records by name.
typedef QHash<QString, Label_Type_Info> SymbolTable;

/// Finds the variables of the scopes in the symbol table.
///
/// The table is the truth, and code inside the process may change it. The index therefore shares
/// the table's data: whatever changes the table, or a record in it, parts the two, and belongsTo()
/// or Scope::belongsTo() tells so.
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
        /// Whether the variables are still those of `record`.
        bool belongsTo(const Label_Type_Info& record) const
        {
            return m_typeDef.isSharedWith(record.typeDef);
        }
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

    /// Puts the records into `table`, which is always the same one, and follows it.
    void insertInto(SymbolTable& table, const QList<Label_Type_Info>& records);
    /// Whether the index finds what `table` holds and nothing else.
    bool belongsTo(const SymbolTable& table) const
    {
        return m_isWhole && m_table.isSharedWith(table);
    }
    /// Adds the scope `record`, or replaces the one of the same name.
    void insert(const Label_Type_Info& record);
    /// The scope of this name, or null.
    const Scope* findScope(const LabelText& name) const
    {
        Scope* const* scope = m_scopesByName.find(name);
        return scope ? *scope : nullptr;
    }

private:
    void clear();

    Q_DISABLE_COPY(SymbolIndex)

    QVector<Scope*> m_scopes;
    NameIndex<Scope*> m_scopesByName;
    SymbolTable m_table;   ///< Shares the data of the table as it was filled.
    bool m_isWhole = true; ///< False from a foreign change of the table on, until it is empty.
};

} // namespace plc

#endif
