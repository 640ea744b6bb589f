#ifndef PLC_DRIVER_RESULT_CODES_H
#define PLC_DRIVER_RESULT_CODES_H

#include "driver/plc_driver.h"

/// Host number of a plc::ReplyOutcome; PLC_RESULT_NO_SETTINGS for any other code. Failures are
/// shifted by the category of the request at the head of the queue.
PLC_DRIVER_EXPORT int GetDriverReturnValue(int code);

/// `base` plus the shift of the request at the head of the queue: its category + 1 for categories 1
/// to 11, else 1 (also when the queue is empty).
PLC_DRIVER_EXPORT int SwitchErrorReturn(int base);

#endif
