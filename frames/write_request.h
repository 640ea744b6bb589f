#ifndef PLC_FRAMES_WRITE_REQUEST_H
#define PLC_FRAMES_WRITE_REQUEST_H

#include "driver/plc_driver.h"

/// Queues one write request for the current batch and, unless the link has failed, shows the value
/// of `var` in the image at once.
PLC_DRIVER_EXPORT void WriteRegister(RW_VAR* var);

/// Queues one write request for the current batch; `var` is the variable that it serves.
PLC_DRIVER_EXPORT void WriteAnalog(RW_VAR* var);

/// Does nothing: in remote mode no frames are built.
PLC_DRIVER_EXPORT void Remote_WriteVar(RW_VAR* var);

#endif
