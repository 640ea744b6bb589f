#ifndef PLC_HOST_RUNTIME_SCAN_LAYOUT_H
#define PLC_HOST_RUNTIME_SCAN_LAYOUT_H

#include <QtCore/QVector>

#include "host/points/data_point.h"
#include "host/points/value_layout.h"
#include "values/export.h"

namespace plc::host {

/// A cyclically read value as the layout sees it.
struct ScanValue {
    int row = 0; ///< Number of the value for the caller.
    ByteRange range;
    int station = 0;
    /// Whether the bytes between it and its neighbours may be read too. They may lie where the PLC
    /// lets nothing be read.
    bool mayBridgeGaps = true;
    quint32 pieceSize = 0; ///< Of the entries of a value that none takes whole.
};

/// The value of a data point that is read with this setting.
PLC_HOST_EXPORT ScanValue scanValue(int row, const DataPoint& point, int maxReadBytes);

/// One entry of the driver's cyclic list.
struct ScanEntry {
    ByteRange range;
    int station = 0;
    QVector<int> rows; ///< The values of which it reads at least a part.
};

/// Entries that read all values, in the order of their places.
///
/// 1. A value lies whole within one entry, and so comes in one reply; only a value longer than
///    longestEntry() is cut, into entries of its own, between its elements.
/// 2. Neighbours share an entry of at most `maxReadBytes`, together with the gap between them, when
///    that makes the pass take fewer requests, or as many and fewer bytes on the wire.
/// 3. Values of different stations share no entry: a station that is switched off takes the whole
///    entry with it.
PLC_HOST_EXPORT QVector<ScanEntry> layOutScan(const QVector<ScanValue>& values, int maxReadBytes);

} // namespace plc::host

#endif
