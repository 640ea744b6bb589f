#ifndef PLC_LISTS_LENGTH_CONVERSION_H
#define PLC_LISTS_LENGTH_CONVERSION_H

#include "symbols/label_resolution.h"

namespace plc {

/// How the count of a string becomes bytes. One-shot reads count registers, cyclic reads bytes;
/// hosts rely on both.
enum class TextCount { Registers, Bytes };

/// What a read asks the PLC for.
struct ReadRange {
    qint32 dataType;
    qint32 address; ///< Bytes.
    qint32 length;  ///< Bytes.
};

/// Turns a resolved place and a count in the host's units into what is read. Bits are read as the
/// 16-bit words that hold them. False for types that cannot be read.
bool toReadRange(const ControlInformationM& place, qint32 count, TextCount textCount,
                 ReadRange& range);

} // namespace plc

#endif
