#ifndef PLC_DRIVER_REQUEST_BUILDING_H
#define PLC_DRIVER_REQUEST_BUILDING_H

#include "driver/plc_driver.h"

/// Queues one read request for the current batch; `var` is the variable that it serves.
PLC_DRIVER_EXPORT void ReadRegister(RW_VAR* var);
PLC_DRIVER_EXPORT void ReadAnalog(RW_VAR* var);

/// Queues one write request for the current batch and, unless the link has failed, shows the value
/// of `var` in the image at once.
PLC_DRIVER_EXPORT void WriteRegister(RW_VAR* var);

/// Queues one write request for the current batch; `var` is the variable that it serves.
PLC_DRIVER_EXPORT void WriteAnalog(RW_VAR* var);

/// Do nothing: in remote mode no frames are built.
PLC_DRIVER_EXPORT void Remote_ReadVar(RW_VAR* var);
PLC_DRIVER_EXPORT void Remote_WriteVar(RW_VAR* var);

/// Queues the two login frames, each with a copy of `var`. Returns 0.
PLC_DRIVER_EXPORT int handshake_data(RW_VAR* var);

#endif
