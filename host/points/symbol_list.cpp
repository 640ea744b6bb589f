#include "host/points/symbol_list.h"

#include <QtCore/QHash>

#include "values/iec_types.h"

namespace plc::host {
namespace {

constexpr int kSubscriptBase = 10;

using StructureRecords = QHash<const project::StructureType*, Label_Type_Info>;

QList<int> driverBounds(const QVector<project::ArrayDimension>& dimensions)
{
    QList<int> bounds{kSubscriptBase};
    for (const project::ArrayDimension& dimension : dimensions) {
        // The driver's stride is the product of upper - lower of the later dimensions: its upper
        // bound is the one past the last element, or the last element of each row would share its
        // place with the first of the next.
        bounds << dimension.lower << dimension.upper + 1;
    }
    return bounds;
}

Label_Type_Info record(const project::Variable& variable, const StructureRecords& structures)
{
    Label_Type_Info info;
    info.name = variable.name;
    info.offset = variable.offset;
    info.typeFlags = quint16(variable.structure ? PLC_TYPE_STRUCTURE : variable.type->code);
    if (variable.structure)
        info.typeDef.append(structures.value(variable.structure.get()));
    if (!variable.dimensions.isEmpty()) {
        info.typeFlags = quint16(info.typeFlags | PLC_TYPE_ARRAY);
        info.dimCount = qint32(variable.dimensions.size());
        info.arrayBounds = driverBounds(variable.dimensions);
    }
    return info;
}

Label_Type_Info record(const project::StructureType& structure, const StructureRecords& structures)
{
    Label_Type_Info info;
    info.name = structure.name;
    info.typeFlags = PLC_TYPE_STRUCTURE_DEFINITION;
    info.offset = structure.size;
    for (const project::Variable& member : structure.members)
        info.members.append(record(member, structures));
    info.memberCount = quint32(info.members.size());
    return info;
}

} // namespace

QList<Label_Type_Info> symbolList(const project::Symbols& source)
{
    StructureRecords structures;
    for (const std::shared_ptr<const project::StructureType>& structure : source.structures)
        structures.insert(structure.get(), record(*structure, structures));
    QList<Label_Type_Info> symbols;
    for (const project::ScopeDefinition& scope : source.scopes) {
        Label_Type_Info variables;
        for (const project::Variable& variable : scope.variables) {
            Label_Type_Info info = record(variable, structures);
            info.areaInfo.append(variable.area);
            variables.members.append(info);
        }
        variables.memberCount = quint32(variables.members.size());
        Label_Type_Info info;
        info.name = scope.name;
        info.typeDef.append(variables);
        symbols.append(info);
    }
    return symbols;
}

} // namespace plc::host
