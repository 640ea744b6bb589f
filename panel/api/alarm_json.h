#ifndef PLC_PANEL_API_ALARM_JSON_H
#define PLC_PANEL_API_ALARM_JSON_H

#include <QtCore/QByteArray>

#include "panel/alarms/alarm_engine.h"
#include "values/iec_types.h"

namespace plc::panel {

/// An alarm as it is now, as a JSON object. `type` is that of its value.
QByteArray alarmText(const AlarmSettings& alarm, const QString& id, const AlarmStatus& status,
                     const values::IecType& type);

/// One of the past, with the state that its alarm has while it is the newest, else that it has
/// ended. `type` may be null where nobody knows it any more.
QByteArray pastAlarmText(const AlarmOccurrence& occurrence, AlarmState state,
                         const values::IecType* type);

/// What pastAlarmText() takes.
struct PastAlarm {
    AlarmOccurrence occurrence;
    AlarmState state = AlarmState::Ended;
    const values::IecType* type = nullptr;
};

/// A list of them, as the interface has it; for any thread.
QByteArray pastAlarmsText(const QVector<PastAlarm>& past);

} // namespace plc::panel

#endif
