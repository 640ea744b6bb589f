#ifndef PLC_DRIVER_LIST_ACCESS_H
#define PLC_DRIVER_LIST_ACCESS_H

#include "driver/plc_driver.h"

namespace plc {

/// Queues the pieces of `bytes`, each at most `pieceSize` long, as AddListWriteVar() without append
/// would one after the other. `record` says where the first goes and whose they are.
void queueValue(const RW_VAR& record, const QByteArray& bytes, int pieceSize);

} // namespace plc

/// Folds the sorted entries of one area into as few as possible of at most `maxLen` bytes and
/// appends them to the cyclic read list. With `maxLen` 1 only entries of equal address are folded,
/// and none is cut.
PLC_DRIVER_EXPORT void BitVarReCreat(QList<RW_VAR>* list, int maxLen);

#endif
