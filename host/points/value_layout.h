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

/// The ranges that the driver cuts a write into: all of the same length but the last.
class PLC_HOST_EXPORT WritePieces {
public:
    WritePieces() = default;
    /// Of `byteCount` bytes (elements of BIT).
    WritePieces(const DataPoint& point, int byteCount);

    int size() const { return (m_byteCount + m_pieceSize - 1) / m_pieceSize; }
    FramePlace at(int index) const;
    FramePlace first() const { return at(0); }

private:
    quint16 m_area = 0;
    bool m_isBit = false;
    quint32 m_address = 0;
    int m_byteCount = 0;
    int m_pieceSize = 1;
};

} // namespace plc::host

#endif
