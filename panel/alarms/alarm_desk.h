#ifndef PLC_PANEL_ALARMS_ALARM_DESK_H
#define PLC_PANEL_ALARMS_ALARM_DESK_H

#include <QtCore/QMap>

#include <memory>
#include <optional>

#include "database/confirmed_time.h"
#include "panel/alarms/alarm_engine.h"
#include "panel/alarms/alarm_history.h"

namespace plc::panel {

/// Alarms with their history. Where that cannot be written, alarms go on, and what it lacks is
/// written when that is possible again, tried once a second; but nothing is acknowledged, since
/// nobody would know of it after a restart. For one thread; times as those of AlarmEngine.
class AlarmDesk {
public:
    /// `history` may be null: then the past is not kept beyond the end of the process.
    static Expected<std::unique_ptr<AlarmDesk>> open(const QVector<AlarmSettings>& alarms,
                                                     std::unique_ptr<AlarmHistory> history,
                                                     qint64 now);

    const AlarmEngine& engine() const { return m_engine; }
    /// As the engine's; what changes is kept by settle().
    void take(const QString& plc, const QString& label, const AlarmObservation& observation)
    {
        m_engine.take(plc, label, observation);
    }
    void confirm(const QString& plc, const Moment& moment) { m_engine.confirm(plc, moment); }

    /// Brings what has changed into the history. To be called behind take() and confirm(), and once
    /// a second. Returns the alarms that have another status than before. The history removes by
    /// age what is too old at a time that both clocks confirm.
    QVector<int> settle(const Moment& now);

    enum class Refusal {
        None,
        NoSuchAlarm,
        NotThat, ///< Nothing is to be acknowledged, or not this occurrence.
        NotKept  ///< The history cannot be written.
    };
    struct Acknowledgement {
        Refusal refusal = Refusal::None;
        QString reason;
    };
    /// Of the occurrence of this begin. The alarm is among those that the next settle() returns.
    Acknowledgement acknowledge(const QString& id, qint64 begin, const QString& user, qint64 now);

    /// As AlarmHistory::between(), with what could not be written yet.
    Expected<QVector<AlarmOccurrence>> between(qint64 from, qint64 to, int most);
    /// Why the history cannot be written; empty while it can.
    const QString& failure() const { return m_failure; }

private:
    AlarmDesk(AlarmEngine engine, std::unique_ptr<AlarmHistory> history)
        : m_engine(std::move(engine)), m_history(std::move(history))
    {
    }
    QVector<int> keepChanges(qint64 now);
    void save(qint64 now);

    AlarmEngine m_engine;
    std::unique_ptr<AlarmHistory> m_history;
    database::ConfirmedTime m_clock;
    std::optional<qint64> m_confirmed; ///< At the last settle().
    /// By number: what the history lacks, or all of what there is where there is none.
    QMap<qint64, AlarmOccurrence> m_unsaved;
    QString m_failure;
    qint64 m_failedAt = 0; ///< The last attempt; of use while there is a failure.
};

} // namespace plc::panel

#endif
