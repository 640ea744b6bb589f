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

/// What is known of a type code; group None for codes that name no type.
TypeInfo typeInfo(quint8 code);

/// Bytes of one element in the host's buffers and on the wire: 1, 2, 4 or 8 for the groups that are
/// moved in whole elements, else 1.
int elementWidth(TypeGroup group);

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
