#ifndef PLC_FRAMES_READ_REQUEST_H
#define PLC_FRAMES_READ_REQUEST_H

#include "driver/plc_driver.h"

/// Queues one read request for the current batch; `var` is the variable that it serves.
PLC_DRIVER_EXPORT void ReadRegister(RW_VAR* var);
PLC_DRIVER_EXPORT void ReadAnalog(RW_VAR* var);

/// Does nothing: in remote mode no frames are built.
PLC_DRIVER_EXPORT void Remote_ReadVar(RW_VAR* var);

#endif
