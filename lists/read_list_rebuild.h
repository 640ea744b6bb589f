#ifndef PLC_LISTS_READ_LIST_REBUILD_H
#define PLC_LISTS_READ_LIST_REBUILD_H

#include "driver/plc_driver.h"

/// Sorts `list` ascending by address; entries of equal address keep their order.
PLC_DRIVER_EXPORT void Bubble_Sort(QList<RW_VAR>* list);

/// Folds the sorted entries of one area into as few as possible of at most `maxLen` bytes and
/// appends them to the cyclic read list. With `maxLen` 1 only entries of equal address are folded,
/// and none is cut.
PLC_DRIVER_EXPORT void BitVarReCreat(QList<RW_VAR>* list, int maxLen);

#endif
