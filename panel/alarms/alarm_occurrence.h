#ifndef PLC_PANEL_ALARMS_ALARM_OCCURRENCE_H
#define PLC_PANEL_ALARMS_ALARM_OCCURRENCE_H

#include <QtCore/QString>

#include <optional>

#include "values/value_text.h"

namespace plc::panel {

/// One time that an alarm was there, from the beginning of its condition to its end. Times are
/// milliseconds since 1970-01-01T00:00:00Z.
struct AlarmOccurrence {
    qint64 number = 0; ///< Ascending in the order in which they were found; never used again.
    // Of the alarm, as it was configured then:
    QString alarm; ///< See alarmId().
    QString plc;
    QString label;
    QString text;
    QString condition; ///< See conditionText().

    qint64 begin = 0;                   ///< When the condition began, not when the delay was over.
    std::optional<values::Value> value; ///< At the begin; nothing where it was not known.
    std::optional<qint64> end;          ///< Nothing: it has not ended as far as is known.
    QString acknowledgedBy;
    std::optional<qint64> acknowledgedAt;

    // What was not seen:
    bool isBeginUnseen = false; ///< The value was not known before: it may have begun earlier.
    bool isEndUnseen = false;   ///< The value was not known before: it may have ended earlier.
    bool hasGap = false;        ///< For some time in between the value was not known.
    bool hasRestart = false;  ///< For some time in between nobody watched: the program began anew.
    bool isWatchLost = false; ///< The configuration has no such alarm any more: the end is the
                              ///< time at which nobody watched any more.
};

} // namespace plc::panel

#endif
