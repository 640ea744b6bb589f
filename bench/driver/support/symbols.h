#ifndef PLC_BENCH_SUPPORT_SYMBOLS_H
#define PLC_BENCH_SUPPORT_SYMBOLS_H

#include "driver/plc_driver.h"

namespace plc::bench {

constexpr int kArrayFlag = 0x100;
constexpr int kStructureFlag = 0x200;
constexpr int kStructureCode = 12;

/// Type codes of whole numbers of 2, 4 and 8 bytes.
constexpr int kWordCode = 4;
constexpr int kDoubleWordCode = 6;
constexpr int kQuadWordCode = 8;

constexpr int kDecimal = 10;

/// A variable of a scope or a member of a structure.
inline Label_Type_Info variable(const QString& name, int typeFlags, int offset, int areaIndex = 0)
{
    Label_Type_Info record;
    record.name = name;
    record.typeFlags = quint16(typeFlags);
    record.offset = offset;
    record.areaInfo.append(areaIndex);
    return record;
}

/// The same as an array of one dimension, from 1 to `upper`.
inline Label_Type_Info arrayOf(Label_Type_Info element, int upper)
{
    element.typeFlags = quint16(element.typeFlags | kArrayFlag);
    element.dimCount = 1;
    element.arrayBounds << kDecimal << 1 << upper;
    return element;
}

inline Label_Type_Info structured(const QString& name, int offset,
                                  const Label_Type_Info& definition)
{
    Label_Type_Info record = variable(name, kStructureCode, offset);
    record.typeDef.append(definition);
    return record;
}

inline Label_Type_Info definitionOf(const QList<Label_Type_Info>& members)
{
    Label_Type_Info definition;
    definition.members = members;
    definition.memberCount = quint32(members.size());
    return definition;
}

/// A structure definition whose elements take `size` bytes.
inline Label_Type_Info structure(int size, const QList<Label_Type_Info>& members)
{
    Label_Type_Info definition = definitionOf(members);
    definition.typeFlags = quint16(kStructureFlag);
    definition.offset = size;
    return definition;
}

inline Label_Type_Info scope(const QString& name, const QList<Label_Type_Info>& variables)
{
    Label_Type_Info record;
    record.name = name;
    record.typeDef.append(definitionOf(variables));
    return record;
}

} // namespace plc::bench

#endif
