#ifndef PLC_DRIVER_RECORDS_H
#define PLC_DRIVER_RECORDS_H

#include "driver/plc_driver.h"

/// Copies all members of `src` but its value bytes into `dst` and empties `dst.data`: the reply
/// record must never show the bytes of an earlier request.
PLC_DRIVER_EXPORT void passRetValue(const RW_VAR& src, RW_VAR& dst);

#endif
