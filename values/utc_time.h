#ifndef PLC_VALUES_UTC_TIME_H
#define PLC_VALUES_UTC_TIME_H

#include <QtCore/QString>

#include "values/export.h"

namespace plc::values {

/// A time as ISO 8601 in UTC: "2026-11-21T06:00:00.123Z". `time` is milliseconds since
/// 1970-01-01T00:00:00Z.
PLC_HOST_EXPORT QString utcTimeText(qint64 time);

} // namespace plc::values

#endif
