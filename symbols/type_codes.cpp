#include "symbols/type_codes.h"

namespace plc {

const TypeInfo kTypeInfos[kTypeInfoCount] = {
    {TypeGroup::None, 0},                   // no type
    {TypeGroup::Flag, 1},                   // PLC_TYPE_BOOL
    {TypeGroup::Byte, 1},                   // PLC_TYPE_BYTE
    {TypeGroup::Word, 2},                   // PLC_TYPE_INT
    {TypeGroup::Word, 2},                   // PLC_TYPE_UINT
    {TypeGroup::DoubleWord, 4},             // PLC_TYPE_DINT
    {TypeGroup::DoubleWord, 4},             // PLC_TYPE_UDINT
    {TypeGroup::DoubleWord, 4},             // PLC_TYPE_REAL
    {TypeGroup::QuadWord, 8},               // PLC_TYPE_LREAL
    {TypeGroup::QuadWord, 8},               // PLC_TYPE_LWORD
    {TypeGroup::Text, PLC_STRING_DISTANCE}, // PLC_TYPE_STRING
    {TypeGroup::Text, PLC_STRING_DISTANCE}, // PLC_TYPE_WSTRING
    {TypeGroup::Structure, 0},  // PLC_TYPE_STRUCTURE: the size stands in the structure definition
    {TypeGroup::Bit, 1},        // PLC_TYPE_BIT
    {TypeGroup::Byte, 1},       // PLC_TYPE_SINT
    {TypeGroup::Byte, 1},       // PLC_TYPE_USINT
    {TypeGroup::Word, 2},       // PLC_TYPE_WORD
    {TypeGroup::DoubleWord, 4}, // PLC_TYPE_DWORD
};

} // namespace plc
