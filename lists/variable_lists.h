#ifndef PLC_LISTS_VARIABLE_LISTS_H
#define PLC_LISTS_VARIABLE_LISTS_H

#include "driver/plc_driver.h"

namespace plc {

/// Whether a value of `length` bytes keeps to PLC_LARGEST_VALUE and its pieces of `pieceSize` bytes
/// to PLC_MOST_PIECES: a mistake in a count or in `maxReadBytes` must not fill the panel's memory.
bool isWithinLimits(qint64 length, int pieceSize);

/// Queues the pieces of `bytes`, each at most `pieceSize` long, as AddListWriteVar() without append
/// would one after the other. `record` says where the first goes and whose they are.
void queueWritePieces(const RW_VAR& record, const QByteArray& bytes, int pieceSize);

} // namespace plc

/// Appends `var` to `list`, whole when `total` is at most `maxLen`, else cut into pieces of
/// `maxLen` bytes, and leaves `var` as the last piece. Adds nothing when `maxLen` is not positive.
PLC_DRIVER_EXPORT void WhetherGroup(int total, int maxLen, RW_VAR* var, QList<RW_VAR>* list);

#endif
