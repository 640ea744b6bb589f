#ifndef PLC_PANEL_ALARMS_ALARM_CONDITION_H
#define PLC_PANEL_ALARMS_ALARM_CONDITION_H

#include "panel/alarms/alarm_settings.h"
#include "values/value_text.h"

namespace plc::panel {

/// What a value says about the condition of an alarm.
enum class Verdict {
    Holds,
    InDeadband,   ///< Does not hold, but does not end an alarm that has begun either.
    Clear,        ///< Does not hold.
    NotComparable ///< Not a number, or of another kind than the limit.
};

/// Of a condition other than NotGood. Integers are compared exactly, whatever their size; a REAL
/// with the REAL that is nearest to the limit, which is what a PLC's own program compares with.
Verdict judge(const AlarmSettings& alarm, const values::Value& value);

} // namespace plc::panel

#endif
