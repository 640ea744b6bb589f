#ifndef PLC_PANEL_ALARMS_ALARM_SETTINGS_H
#define PLC_PANEL_ALARMS_ALARM_SETTINGS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "values/expected.h"
#include "values/value_text.h"

namespace plc::panel {

/// An alarm as the configuration describes it.
struct AlarmSettings {
    enum Condition {
        Above,  ///< The value is greater than `limit`.
        Below,  ///< The value is less than `limit`.
        Is,     ///< The value is `state`.
        NotGood ///< The value is stale, refused or lost.
    };

    QString plc;
    QString label; ///< Of one value, not of several.
    QString text;  ///< What the alarm means to those who read it; may be empty.
    Condition condition = Above;
    double limit = 0.0;    ///< Of Above and Below.
    values::Value state;   ///< Of Is: a truth value, a text or a number.
    double deadband = 0.0; ///< Of Above and Below: how far the value must go back to end the alarm.
    qint64 delay = 0;      ///< ms for which the condition must hold before the alarm begins.
};

/// "above 80", "below -5.5", "is TRUE", "is 'stop'", "not good"; without deadband and delay.
QString conditionText(const AlarmSettings& alarm);

/// What tells this alarm from others, the same in every run; of letters and digits. An alarm with
/// another PLC, label or condition is another alarm; one with another text, deadband or delay is
/// the same.
QString alarmId(const AlarmSettings& alarm);

/// An error names the alarm that makes no sense, or stands twice.
Expected<void> checkAlarms(const QVector<AlarmSettings>& alarms);

} // namespace plc::panel

#endif
