#ifndef PLC_TESTS_SUPPORT_SYMBOL_FIXTURE_H
#define PLC_TESTS_SUPPORT_SYMBOL_FIXTURE_H

#include <ostream>

#include "driver/label_access.h"
#include "support/driver_fixture.h"

namespace plc::test {

constexpr int kArrayFlag = 0x100;
constexpr int kStructureFlag = 0x200;
constexpr int kStructuredCode = 12;

/// A variable of a scope. Members of structures are made alike; their area is not looked at.
inline Label_Type_Info variable(const QString& name, int typeFlags, int offset, int areaIndex = 0)
{
    Label_Type_Info record;
    record.name = name;
    record.typeFlags = quint16(typeFlags);
    record.offset = offset;
    record.areaInfo.append(areaIndex);
    return record;
}

/// The same variable as an array; `bounds` is the number base, then lower and upper bounds.
inline Label_Type_Info arrayOf(Label_Type_Info element, const QList<int>& bounds)
{
    element.typeFlags = quint16(element.typeFlags | kArrayFlag);
    element.dimCount = int(bounds.size() - 1) / 2;
    element.arrayBounds = bounds;
    return element;
}

/// A structure definition whose elements take `size` bytes.
inline Label_Type_Info structure(int size, const QList<Label_Type_Info>& members)
{
    Label_Type_Info definition;
    definition.typeFlags = quint16(kStructureFlag);
    definition.offset = size;
    definition.members = members;
    definition.memberCount = quint32(members.size());
    return definition;
}

/// A variable or member of this structure.
inline Label_Type_Info structured(const QString& name, int offset,
                                  const Label_Type_Info& definition, int areaIndex = 0)
{
    Label_Type_Info record = variable(name, kStructuredCode, offset, areaIndex);
    record.typeDef.append(definition);
    return record;
}

/// A scope with these variables.
inline Label_Type_Info scope(const QString& name, const QList<Label_Type_Info>& variables)
{
    Label_Type_Info type;
    type.members = variables;
    type.memberCount = quint32(variables.size());
    Label_Type_Info record;
    record.name = name;
    record.typeDef.append(type);
    return record;
}

inline void passSymbols(QList<Label_Type_Info> scopes)
{
    PassVarName_2(&scopes);
}

/// The driver as after loading; the table has no way of its own to be emptied.
inline void forgetSymbols()
{
    ComInfo* settings = PLC_driver.settings;
    PLC_driver.~Communication_Protocol();
    new (&PLC_driver) Communication_Protocol;
    PLC_driver.settings = settings;
}

/// The plant that most tests share: scope MAIN with a scalar, an array of two dimensions and an
/// array of structures, all in area 3.
inline Label_Type_Info mainScope()
{
    Label_Type_Info flags = arrayOf(variable("flags", 2, 8), {10, 0, 3});
    Label_Type_Info definition = structure(12, {variable("a", 6, 0), variable("b", 7, 4), flags});
    return scope(
        "MAIN", {variable("speed", 4, 10, 3), arrayOf(variable("tab", 3, 100, 3), {10, 0, 3, 1, 5}),
                 arrayOf(structured("rec", 200, definition, 3), {10, 1, 8})});
}

/// What resolving a label gave. Members that the walk did not write keep these values.
constexpr int kKeptType = 0xEE;
constexpr int kKeptAddress = -11111;
constexpr int kKeptArea = -22222;

struct Resolution {
    int result = 0;
    int dataType = kKeptType;
    int address = kKeptAddress;
    int areaIndex = kKeptArea;

    bool operator==(const Resolution& other) const
    {
        return result == other.result && dataType == other.dataType && address == other.address &&
               areaIndex == other.areaIndex;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const Resolution& resolution)
{
    return stream << "result " << resolution.result << ", type " << resolution.dataType
                  << ", address " << resolution.address << ", area " << resolution.areaIndex;
}

inline Resolution resolve(const QString& label)
{
    ControlInformationM info = {quint8(kKeptType), kKeptAddress, kKeptArea};
    Resolution resolution;
    resolution.result = get_label_address_info(label, info);
    resolution.dataType = info.dataType;
    resolution.address = info.address;
    resolution.areaIndex = info.areaIndex;
    return resolution;
}

inline Resolution resolved(int dataType, int address, int areaIndex)
{
    return Resolution{0, dataType, address, areaIndex};
}

} // namespace plc::test

#endif
