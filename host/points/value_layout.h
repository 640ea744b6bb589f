#ifndef PLC_HOST_POINTS_VALUE_LAYOUT_H
#define PLC_HOST_POINTS_VALUE_LAYOUT_H

#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "host/wire/frame_entries.h"
#include "values/export.h"

namespace plc::host {

/// A run of bytes in PLC memory.
struct ByteRange {
    int area = 0;
    quint32 start = 0;
    quint32 size = 0;

    quint32 end() const { return start + size; }
};

/// The bytes that make up the value; of bits the 16-bit words that hold them.
PLC_HOST_EXPORT ByteRange valueBytes(const DataPoint& point);

/// Bytes from one element to the next, which are never cut: a text, a number, a word of bits. One
/// for a text alone, which may be longer than any entry.
PLC_HOST_EXPORT quint32 elementBytes(const DataPoint& point);

/// Bytes of the pieces that a value longer than longestEntry() is read in: whole elements of at
/// most `maxReadBytes`, but one at least.
PLC_HOST_EXPORT quint32 pieceBytes(const DataPoint& point, int maxReadBytes);

/// The ranges that a read of the value alone asks the PLC for: one for all of it, or, of a value
/// longer than longestEntry(), pieces of pieceBytes().
PLC_HOST_EXPORT QVector<FrameEntry> oneShotPieces(const DataPoint& point, int maxReadBytes);

/// The ranges that the driver cuts a write of `byteCount` bytes (elements of BIT) into.
PLC_HOST_EXPORT QVector<FrameEntry> writePieces(const DataPoint& point, int byteCount);

} // namespace plc::host

#endif
