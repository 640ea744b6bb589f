#ifndef PLC_HOST_VALUE_LAYOUT_H
#define PLC_HOST_VALUE_LAYOUT_H

#include <QtCore/QVector>

#include "host/data_point.h"
#include "host/frame_entries.h"

namespace plc {

// How much the driver is told to move for a data point. Its entry points count in different units,
// by the type code:
//
//   type                  reading and writing   cyclic list          one-shot list
//   BOOL, BYTE, SINT, BIT elements              elements             elements
//   INT, UINT, WORD       registers             registers            registers
//   four bytes            2 registers each      2 each               2 each
//   eight bytes           4 registers each      4 each               4 each
//   STRING, WSTRING       registers             bytes                registers

/// A run of bytes in PLC memory.
struct ByteRange {
    int area = 0;
    quint32 start = 0;
    quint32 size = 0;

    quint32 end() const { return start + size; }
};

/// `count` of GetRegisterData().
int readCount(const DataPoint& point);

/// `HostVarItem::count` for the cyclic read list.
int cyclicCount(const DataPoint& point);

/// The data point as ReCreatReadVarList() takes it.
HostVarItem cyclicItem(const DataPoint& point);

/// `RW_VAR::length` for AddListOnceReadVar().
int oneShotCount(const DataPoint& point);

/// The bytes that make up the value; of bits the 16-bit words that hold them.
ByteRange valueBytes(const DataPoint& point);

/// The ranges that a one-shot read asks the PLC for, in the order in which the driver queues them.
QVector<FrameEntry> oneShotPieces(const DataPoint& point, int maxReadBytes);

/// The ranges that the driver cuts a write of `byteCount` bytes (elements of BIT) into.
QVector<FrameEntry> writePieces(const DataPoint& point, int byteCount);

} // namespace plc

#endif
