#ifndef PLC_PANEL_ALARMS_ALARM_ENGINE_H
#define PLC_PANEL_ALARMS_ALARM_ENGINE_H

#include <QtCore/QHash>
#include <QtCore/QPair>
#include <QtCore/QVector>

#include <optional>
#include <vector>

#include "panel/alarms/alarm_occurrence.h"
#include "panel/alarms/alarm_settings.h"
#include "panel/model/moment.h"
#include "values/expected.h"

namespace plc::panel {

enum class AlarmState {
    Unknown, ///< The value is not known, so nobody can say whether the condition holds.
    Normal,
    Active,
    Ended ///< The condition does not hold any more; not acknowledged.
};

/// "unknown", "normal", "active", "ended"
QString alarmStateText(AlarmState state);

/// What is to be told of an alarm.
struct AlarmStatus {
    AlarmState state = AlarmState::Unknown;
    std::optional<qint64> unknownSince; ///< While it is unknown.
    /// The newest, while it has not ended or is not acknowledged; in each state but Normal there
    /// may be one.
    std::optional<AlarmOccurrence> occurrence;
    int unacknowledgedBefore = 0; ///< Occurrences before that one.
};

/// What a value was found to be.
struct AlarmObservation {
    std::optional<values::Value> value; ///< Nothing: stale, refused or lost.
    /// Of a value when the PLC was asked for it, else when it was found.
    Moment moment;
};

/// Of an alarm, what an earlier run has left.
struct KeptOccurrence {
    AlarmOccurrence newest;
    int unacknowledgedBefore = 0;
};

/// Finds out when alarms begin and end.
///
/// 1. An alarm begins when its condition has held for its delay, and ends when it does not hold,
///    beyond the deadband. What is not known neither begins nor ends it.
/// 2. A condition is known to hold up to the last time at which its value was asked for; so a delay
///    is not over by the clock alone, but when confirm() says that values were asked for since.
/// 3. An interrupted delay begins anew.
/// 4. An occurrence of an earlier run that had not ended goes on until the value is known again;
///    that the program was away is told of it.
///
/// Has neither clock nor files. Delays are of the steady clock. Times that are told are of the
/// clock that people read, milliseconds since 1970-01-01T00:00:00Z: a begin as that clock went when
/// the delay was over, an end as it went when the end was found. Where it was set in between, an
/// occurrence is longer or shorter by as much as it was set, but never ends before its begin.
class AlarmEngine {
public:
    /// The alarms are as checkAlarms() wants them. Occurrences get the numbers from `firstNumber`
    /// on.
    AlarmEngine(const QVector<AlarmSettings>& alarms, const QVector<KeptOccurrence>& kept,
                qint64 firstNumber, qint64 now);

    const QVector<AlarmSettings>& alarms() const { return m_alarms; }
    /// -1: there is none.
    int find(const QString& id) const { return m_byId.value(id, -1); }
    const QString& id(int alarm) const { return m_watches[std::size_t(alarm)].id; }
    AlarmStatus status(int alarm) const;

    /// What is new of a value.
    void take(const QString& plc, const QString& label, const AlarmObservation& observation);
    /// Every value of the PLC that is good was asked for at this time or later and is as it was
    /// told last.
    void confirm(const QString& plc, const Moment& moment);
    void advance(const Moment& now);

    /// The occurrence with this begin as it is when `user` has acknowledged it; an error when it
    /// cannot be acknowledged. Nothing is changed: see acknowledge().
    Expected<AlarmOccurrence> acknowledged(int alarm, qint64 begin, const QString& user,
                                           qint64 now) const;
    /// Takes that what acknowledged() gave is so, which took a while: the occurrence may have ended
    /// since, and others may have begun. `unacknowledgedBefore`: how many there were before it
    /// then.
    void acknowledge(int alarm, const AlarmOccurrence& occurrence, int unacknowledgedBefore = 0);

    /// What has changed since the last call.
    struct Changes {
        QVector<int> alarms;                  ///< Each once.
        QVector<AlarmOccurrence> occurrences; ///< In their newest state.
        bool isEmpty() const { return alarms.isEmpty() && occurrences.isEmpty(); }
    };
    Changes takeChanges();

private:
    /// A condition whose delay is not over.
    struct Pending {
        qint64 since = 0; ///< Of the steady clock.
        std::optional<values::Value> value;
        bool isBeginUnseen = false;
    };
    struct Watch {
        QString id;
        bool isKnown = false;
        qint64 unknownSince = 0;
        std::optional<Pending> pending;
        std::optional<AlarmOccurrence> occurrence; ///< As AlarmStatus::occurrence.
        int unacknowledgedBefore = 0;
        bool hasChanged = false;
    };

    void restore(const KeptOccurrence& kept, qint64 now);
    void takeGood(int alarm, const std::optional<values::Value>& value, bool holds, bool isClear,
                  const Moment& moment);
    void loseValue(int alarm, qint64 time);
    void beginIfDue(int alarm, const Moment& moment);
    void end(int alarm, qint64 time, bool isUnseen);
    void tell(int alarm);
    void keep(const AlarmOccurrence& occurrence);
    Watch& watch(int alarm) { return m_watches[std::size_t(alarm)]; }

    const QVector<AlarmSettings> m_alarms;
    std::vector<Watch> m_watches; ///< One for each alarm.
    QHash<QString, int> m_byId;
    QHash<QPair<QString, QString>, QVector<int>> m_byLabel;
    QHash<QString, QVector<int>> m_byPlc;
    qint64 m_nextNumber;
    QVector<int> m_changed;
    QHash<qint64, AlarmOccurrence> m_unsaved;
};

} // namespace plc::panel

#endif
