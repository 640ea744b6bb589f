#ifndef PLC_SYMBOLS_TYPE_CODES_H
#define PLC_SYMBOLS_TYPE_CODES_H

#include "driver/plc_driver.h"

namespace plc {

/// Type codes that are converted alike.
enum class TypeGroup : quint8 {
    None, ///< no type
    Flag, ///< one byte, zero or not
    Byte,
    Word,
    DoubleWord,
    QuadWord,
    Text, ///< bytes in PLC order; elements of an array lie 255 bytes apart
    Structure,
    Bit ///< its address counts bits
};

/// Hosts count in 16-bit registers.
const int kRegisterBytes = 2;

struct TypeInfo {
    TypeGroup group;
    quint8 elementSize; ///< Bytes between elements of an array; 0: elements have no size.
};

/// By type code; group None for 0.
const int kTypeInfoCount = PLC_TYPE_DWORD + 1;
extern const TypeInfo kTypeInfos[kTypeInfoCount];

/// What is known of a type code; group None for codes that name no type.
inline TypeInfo typeInfo(quint8 code)
{
    return kTypeInfos[code < kTypeInfoCount ? code : 0];
}

/// Bytes of one element in the host's buffers and on the wire: 1, 2, 4 or 8 for the groups that are
/// moved in whole elements, else 1.
inline int elementWidth(TypeGroup group)
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

/// Where the bit of a bit address lies. The word index serves as the byte address of the word's
/// high byte, so that words of neighbouring index share a byte; PLC and hosts lay bits out for it.
struct BitPlace {
    quint32 highByte;
    quint32 lowByte;
    int bit;

    explicit BitPlace(quint32 bitAddress)
        : highByte(bitAddress >> 4), lowByte(highByte + 1), bit(int(bitAddress & 15))
    {
    }
};

} // namespace plc

#endif
