#ifndef PLC_LISTS_READ_LIST_REBUILD_H
#define PLC_LISTS_READ_LIST_REBUILD_H

#include "driver/plc_driver.h"
#include "symbols/label_resolution.h"

namespace plc {

/// The cyclic reads that cover `items`: grouped by area, sorted by address, merged up to
/// ComInfo::maxReadBytes. What does not resolve and what is above a limit is left out.
QList<RW_VAR> cyclicReads(const QList<HostVarItem>& items, const ComInfo& settings,
                          const LabelResolver& resolver);

/// Folds the sorted entries of one area into as few as possible of at most `maxLen` bytes, which is
/// above 0. With `maxLen` 1 only entries of equal address are folded, and none is cut.
QList<RW_VAR> foldedReads(const QList<RW_VAR>& sorted, int maxLen);

} // namespace plc

/// Sorts `list` ascending by address; entries of equal address keep their order.
PLC_DRIVER_EXPORT void Bubble_Sort(QList<RW_VAR>* list);

#endif
