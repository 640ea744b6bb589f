#include "values/utc_time.h"

#include <QtCore/QDateTime>

namespace plc::values {

QString utcTimeText(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODateWithMs);
}

} // namespace plc::values
