#include "symbols/symbol_index.h"

#include <QtCore/QtAlgorithms>

namespace plc {

namespace {

SymbolIndex::Variable indexed(const Label_Type_Info& record, int memberIndex)
{
    SymbolIndex::Variable variable;
    variable.memberIndex = memberIndex;
    variable.address = record.offset;
    variable.typeFlags = record.typeFlags;
    variable.hasArea = !record.areaInfo.isEmpty();
    variable.areaIndex = variable.hasArea ? record.areaInfo.at(0) : 0;
    return variable;
}

} // namespace

void SymbolIndex::Scope::assign(const Label_Type_Info& record)
{
    m_variables.clear();
    m_typeDef = record.typeDef;
    if (m_typeDef.isEmpty())
        return;
    const Label_Type_Info& definition = m_typeDef.at(0);
    const int count = int(qMin(qint64(definition.memberCount), qint64(definition.members.size())));
    m_variables.reserve(count);
    for (int i = 0; i < count; ++i) {
        const Label_Type_Info& variable = definition.members.at(i);
        m_variables.insert(variable.name, indexed(variable, i));
    }
}

SymbolIndex::~SymbolIndex()
{
    clear();
}

void SymbolIndex::insertInto(SymbolTable& table, const QList<Label_Type_Info>& records)
{
    // Whoever changed the table may still hold references into it, through which a later change
    // would not be seen. An empty table has nothing to refer to.
    m_isWhole = belongsTo(table) || table.isEmpty();
    if (table.isEmpty())
        clear();
    m_table = SymbolTable(); // else the table would be copied before it is filled
    for (int i = 0; i < int(records.size()); ++i) {
        const Label_Type_Info& record = records.at(i);
        table.insert(record.name, record);
        insert(record);
    }
    if (m_isWhole)
        m_table = table;
}

void SymbolIndex::insert(const Label_Type_Info& record)
{
    Scope* const* known = m_scopesByName.find(LabelText(record.name));
    Scope* scope = known ? *known : nullptr;
    if (!scope) {
        scope = new Scope(record.name);
        m_scopes.append(scope);
        m_scopesByName.insert(scope->m_name, scope);
    }
    scope->assign(record);
}

void SymbolIndex::clear()
{
    qDeleteAll(m_scopes);
    m_scopes.clear();
    m_scopesByName.clear();
}

} // namespace plc
