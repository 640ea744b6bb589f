#ifndef PLC_TESTS_PANEL_ALARMS_ALARM_EXAMPLES_H
#define PLC_TESTS_PANEL_ALARMS_ALARM_EXAMPLES_H

#include "panel/alarms/alarm_settings.h"
#include "panel/model/moment.h"

namespace plc::panel {
namespace test {

/// 2026-11-22T00:00:00Z: 20779 days of 86400 s since 1970.
constexpr qint64 kStart = 20779LL * 86400 * 1000;

/// So long after kStart; the wall clock was set forth, or back, by `set` until then.
inline Moment at(qint64 time, qint64 set = 0)
{
    return {kStart + time + set, time};
}

inline AlarmSettings alarmOn(const char* label, AlarmSettings::Condition condition)
{
    AlarmSettings alarm;
    alarm.plc = QStringLiteral("press");
    alarm.label = QString::fromLatin1(label);
    alarm.text = QStringLiteral("Look at it");
    alarm.condition = condition;
    return alarm;
}

inline AlarmSettings above(double limit, double deadband = 0, qint64 delay = 0)
{
    AlarmSettings alarm = alarmOn("Plant.level", AlarmSettings::Above);
    alarm.limit = limit;
    alarm.deadband = deadband;
    alarm.delay = delay;
    return alarm;
}

inline AlarmSettings below(double limit, double deadband = 0)
{
    AlarmSettings alarm = above(limit, deadband);
    alarm.condition = AlarmSettings::Below;
    return alarm;
}

inline AlarmSettings is(const values::Value& state)
{
    AlarmSettings alarm = alarmOn("Plant.level", AlarmSettings::Is);
    alarm.state = state;
    return alarm;
}

inline AlarmSettings notGood(qint64 delay)
{
    AlarmSettings alarm = alarmOn("Plant.level", AlarmSettings::NotGood);
    alarm.delay = delay;
    return alarm;
}

} // namespace test
} // namespace plc::panel

#endif
