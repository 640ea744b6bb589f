#ifndef PLC_FRAMES_HANDSHAKE_H
#define PLC_FRAMES_HANDSHAKE_H

#include "driver/plc_driver.h"

namespace plc {

/// Outcomes of handshake_data_check().
enum LoginCheck {
    kLoginGood = 0,
    kLoginNotExpected = 1,
    kLoginTooShort = 8,
    kIdentificationRefused = 9,
    kFileRefused = 13
};

} // namespace plc

/// Queues the two login frames, each with a copy of `var`. Returns 0.
PLC_DRIVER_EXPORT int handshake_data(RW_VAR* var);

/// Judges the reply to the login frame at the head of the queue: 0 good, else a plc::LoginCheck.
/// Captures `plcInfo1` and `plcInfo2` from the second reply.
PLC_DRIVER_EXPORT int handshake_data_check(QByteArray* reply);

#endif
