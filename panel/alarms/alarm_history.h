#ifndef PLC_PANEL_ALARMS_ALARM_HISTORY_H
#define PLC_PANEL_ALARMS_ALARM_HISTORY_H

#include <memory>

#include "database/database_files.h"
#include "database/sqlite_database.h"
#include "panel/alarms/alarm_store.h"

namespace plc::panel {

/// How much of the past is kept. What has not ended, and the newest of each alarm while it is not
/// acknowledged, is never removed.
struct AlarmHistoryLimits {
    qint64 occurrences = 100000;
    qint64 age = 400LL * 24 * 3600 * 1000; ///< ms since the end.
};

/// Occurrences of alarms in an SQLite database:
///
///   alarm(id, key, plc, label, text, condition)   key: see alarmId()
///   occurrence(number, alarm, began, kind, bits, words, ended, acknowledgedBy, acknowledgedAt,
///   flags)
///
/// What save() has returned for is on the disk; it removes what is beyond the limits. While it is
/// open, no other process can open it.
///
/// Where the path leads to another file than the one that was opened, or to none, a new one is
/// begun there, with the numbers that follow: what has not ended goes along, and what of an alarm
/// was not acknowledged since something of it was. All else stays in the file that was moved.
class AlarmHistory : public AlarmStore {
public:
    /// Creates the file if it does not exist.
    static Expected<std::unique_ptr<AlarmHistory>> open(const QString& path,
                                                        const AlarmHistoryLimits& limits);
    ~AlarmHistory() override;

    Expected<void> save(const QVector<AlarmOccurrence>& occurrences,
                        std::optional<qint64> confirmed) override;
    Expected<QVector<KeptOccurrence>> kept() override;
    Expected<QVector<AlarmOccurrence>> between(qint64 from, qint64 to, int most) override;
    Expected<qint64> nextNumber() override;
    Expected<void> look() override;
    int changedFiles() const override { return m_changedFiles; }

private:
    AlarmHistory() = default;
    Expected<void> prepare(const QString& path);
    Expected<bool> checkKind(const QString& path);
    Error cannotOpen(const QString& path) const;
    bool saveOne(const AlarmOccurrence& occurrence);
    bool removeOld(std::optional<qint64> confirmed);
    Expected<void> leave();
    Expected<void> begin(const QString& path);
    Expected<void> checkNumbers();
    bool carryOver();
    Expected<QVector<AlarmOccurrence>> openOnes();
    Expected<QVector<AlarmOccurrence>> allOf(database::SqliteStatement* rows) const;
    Expected<qint64> followingNumber();
    Error failed() const;

    database::SqliteDatabase m_database;
    database::DatabaseFiles m_files;
    int m_changedFiles = 0;
    qint64 m_lastNumber = 0;            ///< That was ever given.
    QVector<AlarmOccurrence> m_carried; ///< Into the next file.
    AlarmHistoryLimits m_limits;
    struct Statements;
    std::unique_ptr<Statements> m_statements; ///< Null: there is no file.
};

} // namespace plc::panel

#endif
