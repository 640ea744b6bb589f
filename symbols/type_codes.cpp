#include "symbols/type_codes.h"

namespace plc {

namespace {

// By type code.
const TypeInfo kTypes[] = {
    {TypeGroup::None, 0},       // 0
    {TypeGroup::Flag, 1},       // 1
    {TypeGroup::Byte, 1},       // 2
    {TypeGroup::Word, 2},       // 3
    {TypeGroup::Word, 2},       // 4
    {TypeGroup::DoubleWord, 4}, // 5
    {TypeGroup::DoubleWord, 4}, // 6
    {TypeGroup::DoubleWord, 4}, // 7
    {TypeGroup::QuadWord, 8},   // 8
    {TypeGroup::QuadWord, 8},   // 9
    {TypeGroup::Text, 255},     // 10
    {TypeGroup::Text, 255},     // 11
    {TypeGroup::Structure, 0},  // 12: the size stands in the structure definition
    {TypeGroup::Bit, 1},        // 13
    {TypeGroup::Byte, 1},       // 14
    {TypeGroup::Byte, 1},       // 15
    {TypeGroup::Word, 2},       // 16
    {TypeGroup::DoubleWord, 4}, // 17
};
const int kTypeCount = int(sizeof kTypes / sizeof kTypes[0]);

} // namespace

TypeInfo typeInfo(quint8 code)
{
    return kTypes[code < kTypeCount ? code : 0];
}

int elementWidth(TypeGroup group)
{
    switch (group) {
        case TypeGroup::Word:
            return 2;
        case TypeGroup::DoubleWord:
            return 4;
        case TypeGroup::QuadWord:
            return 8;
        default:
            return 1;
    }
}

} // namespace plc
