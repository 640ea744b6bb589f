#ifndef PLC_LISTS_VARIABLE_LISTS_H
#define PLC_LISTS_VARIABLE_LISTS_H

#include "driver/plc_driver.h"
#include "symbols/label_resolution.h"

namespace plc {

/// Whether a value of `length` bytes keeps to PLC_LARGEST_VALUE and its pieces of `pieceSize` bytes
/// to PLC_MOST_PIECES: a mistake in a count or in `maxReadBytes` must not fill the panel's memory.
bool isWithinLimits(qint64 length, int pieceSize);

/// Adds a write in place of a queued one of the same range, or at the end while there is room. The
/// head, which may be under way, is never replaced.
void queueWrite(QList<RW_VAR>& list, const RW_VAR& write);

/// Queues the pieces of `bytes`, each at most `pieceSize` long, as queueWrite() would one after the
/// other. `record` says where the first goes and whose they are.
void queueWritePieces(QList<RW_VAR>& list, const RW_VAR& record, const QByteArray& bytes,
                      int pieceSize);

/// Turns a host's record, whose length is a count in its units, into what is read. False when there
/// is nothing to read or too much; the record may be half converted then.
bool toOneShotRead(RW_VAR& var, const ComInfo& settings, const LabelResolver& resolver);

/// Adds the pieces of `var` that are not listed yet and leaves `var` as its last piece with the
/// address behind it. Its length is above 0.
void addReadPieces(QList<RW_VAR>& list, RW_VAR& var, qint32 pieceSize);

} // namespace plc

/// Appends `var` to `list`, whole when `total` is at most `maxLen`, else cut into pieces of
/// `maxLen` bytes, and leaves `var` as the last piece. Adds nothing when `maxLen` is not positive.
PLC_DRIVER_EXPORT void WhetherGroup(int total, int maxLen, RW_VAR* var, QList<RW_VAR>* list);

#endif
