#ifndef PLC_HOST_REPORT_FRAME_TEXT_H
#define PLC_HOST_REPORT_FRAME_TEXT_H

#include <QtCore/QString>

#include "host/link/session.h"
#include "values/export.h"

namespace plc::host {

/// What a request says: "read 2 entries: area 3 address 10 length 2, ...".
PLC_HOST_EXPORT QString requestText(const SentRequest& request);

/// What a reply to this request says and how the driver judged it.
PLC_HOST_EXPORT QString replyText(const SentRequest& request, const QByteArray& reply,
                                  const Answer& answer);

/// Bytes as hexadecimal pairs.
PLC_HOST_EXPORT QString hexText(const QByteArray& bytes);

} // namespace plc::host

#endif
