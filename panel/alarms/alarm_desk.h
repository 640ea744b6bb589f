#ifndef PLC_PANEL_ALARMS_ALARM_DESK_H
#define PLC_PANEL_ALARMS_ALARM_DESK_H

#include <QtCore/QMap>

#include <chrono>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "database/confirmed_time.h"
#include "panel/alarms/alarm_engine.h"
#include "panel/alarms/alarm_store.h"
#include "service/disk_thread.h"

namespace plc::panel {

/// Alarms with their history, which a thread of its own writes and reads: nobody waits for the
/// disk. Where the history cannot be written, alarms go on, and what it lacks is written when that
/// is possible again, tried once a second; but nothing is acknowledged, since nobody would know of
/// it after a restart. A history that was moved or removed is gone on with in a new one within a
/// second. For one thread; times as those of AlarmEngine.
class AlarmDesk {
public:
    static constexpr int kMostWaiting = 32; ///< Questions of the past, and acknowledgements.

    /// `store` may be null: then the past is not kept beyond the end of the process. It is read
    /// here. `wake` is called by another thread: deliver() is to be called by this one.
    static Expected<std::unique_ptr<AlarmDesk>> open(const QVector<AlarmSettings>& alarms,
                                                     std::shared_ptr<AlarmStore> store,
                                                     service::DiskThread::Wake wake, qint64 now);

    const AlarmEngine& engine() const { return m_engine; }
    /// As the engine's; what changes is kept by settle().
    void take(const QString& plc, const QString& label, const AlarmObservation& observation)
    {
        m_engine.take(plc, label, observation);
    }
    void confirm(const QString& plc, const Moment& moment) { m_engine.confirm(plc, moment); }

    /// Has what has changed brought into the history. To be called behind take() and confirm(), and
    /// once a second. Returns the alarms that have another status than before. The history removes
    /// by age what is too old at a time that both clocks confirm.
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
    using Answered = std::function<void(const Acknowledgement&)>;
    /// Of the occurrence of this begin; answered once, when it is in the history or cannot be. The
    /// alarm is then among those that the next settle() returns.
    void acknowledge(const QString& id, qint64 begin, const QString& user, const Moment& now,
                     Answered answered);

    using Found = std::function<void(const Expected<QVector<AlarmOccurrence>>&)>;
    /// As AlarmStore::between(), with what could not be written yet; called once, perhaps at once.
    void between(qint64 from, qint64 to, int most, Found found);

    void deliver();
    /// Waits until all is in the history, for so long at most. Behind it nothing is kept any more.
    void finish(std::chrono::milliseconds patience);
    bool isIdle() const { return !m_isSaving && !m_isLooking && m_asked.empty(); }

    /// Why the history cannot be written; empty while it can.
    const QString& failure() const { return m_failure.isEmpty() ? m_missing : m_failure; }
    /// How often the history was moved or removed, and is gone on with in a new one.
    int changedFiles() const { return m_changedFiles; }
    /// Since when the disk has owed an answer, as values::steadyTime() counts; nothing: it owes
    /// none.
    std::optional<qint64> busySince() const { return m_busySince; }

private:
    struct Wish {
        int alarm = -1;
        qint64 begin = 0;
        QString user;
        qint64 time = 0;
        Answered answered;
    };
    struct Refused {
        Answered answered;
        QString reason;
    };
    /// A wish that is being written.
    struct Taken {
        int alarm = -1;
        AlarmOccurrence occurrence;
        int unacknowledgedBefore = 0;
        Answered answered;
    };
    struct Question {
        qint64 from = 0;
        qint64 to = 0;
        int most = 0;
        Found found;
    };

    AlarmDesk(AlarmEngine engine, std::shared_ptr<AlarmStore> store,
              service::DiskThread::Wake wake);
    void collect();
    std::vector<Refused> takeWishes();
    bool isTaken(int alarm) const;
    bool mustWait() const;
    void save();
    void write();
    void takeSaved(const Expected<void>& outcome);
    void look();
    void takeChangedFiles(int changedFiles);
    void putBack();
    void confirmWish(const Taken& taken);
    void answer(const Expected<QVector<AlarmOccurrence>>& written);

    AlarmEngine m_engine;
    const std::shared_ptr<AlarmStore> m_store;
    database::ConfirmedTime m_clock;
    std::optional<qint64> m_confirmed; ///< At the last settle().
    QVector<int> m_changed;            ///< What the next settle() returns.
    /// By number: what the history lacks, or all of what there is where there is none.
    QMap<qint64, AlarmOccurrence> m_unsaved;
    QMap<qint64, AlarmOccurrence> m_saving; ///< The same, on its way.
    std::deque<Wish> m_wishes;
    std::vector<Taken> m_taken; ///< Saved with m_saving.
    std::deque<Question> m_asked;
    bool m_isSaving = false;
    bool m_hasEnded = false;
    bool m_isLooking = false;
    QString m_failure;
    QString m_missing; ///< Why there is no history, as it was looked for last; empty: there is one.
    int m_changedFiles = 0;
    // By the steady clock:
    qint64 m_now = 0;
    qint64 m_triedAt = 0;
    std::optional<qint64> m_lookedAt;
    qint64 m_failedAt = 0; ///< Of use while there is a failure.
    std::optional<qint64> m_busySince;
    std::unique_ptr<service::DiskThread> m_disk; ///< Null without a store; uses the others.
};

} // namespace plc::panel

#endif
