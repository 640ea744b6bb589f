#ifndef PLC_HOST_FRAME_TEXT_H
#define PLC_HOST_FRAME_TEXT_H

#include <QtCore/QString>

#include "host/session.h"

namespace plc {

/// What a request says: "read 2 entries: area 3 address 10 length 2, ...".
QString requestText(const SentRequest& request);

/// What a reply to this request says and how the driver judged it.
QString replyText(const SentRequest& request, const QByteArray& reply, const Answer& answer);

/// Bytes as hexadecimal pairs.
QString hexText(const QByteArray& bytes);

} // namespace plc

#endif
