#ifndef PLC_FRAMES_HANDSHAKE_H
#define PLC_FRAMES_HANDSHAKE_H

#include "frames/frame_layer.h"

namespace plc {

/// Outcomes of the login's replies.
enum LoginCheck {
    kLoginGood = 0,
    kLoginNotExpected = 1,
    kLoginTooShort = 8,
    kIdentificationRefused = 9,
    kFileRefused = 13
};

/// Requests of the login, and so its replies.
const int kLoginFrames = 2;

/// The first request of the login.
QByteArray identificationRequest();

/// The second request of the login.
QByteArray fileRequest();

/// Judges the reply to identificationRequest(), which has a whole header.
LoginCheck checkIdentification(const QByteArray& reply);

/// Judges the reply to fileRequest() and takes `info` from one that is good.
LoginCheck checkFile(const QByteArray& reply, PlcInfo& info);

} // namespace plc

#endif
