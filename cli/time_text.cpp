#include "cli/time_text.h"

namespace plc::cli {

QString timeText(const QDateTime& time)
{
    // Local time itself is written without its distance.
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

QString wallClock()
{
    return timeText(QDateTime::currentDateTime());
}

} // namespace plc::cli
