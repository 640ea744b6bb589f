#ifndef PLC_PANEL_ALARMS_ALARM_HISTORY_H
#define PLC_PANEL_ALARMS_ALARM_HISTORY_H

#include <memory>

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

private:
    AlarmHistory() = default;
    Expected<void> prepare(const QString& path);
    Expected<bool> checkKind(const QString& path);
    Error cannotOpen(const QString& path) const;
    bool saveOne(const AlarmOccurrence& occurrence);
    bool removeOld(std::optional<qint64> confirmed);
    Error failed() const;

    database::SqliteDatabase m_database;
    AlarmHistoryLimits m_limits;
    struct Statements;
    std::unique_ptr<Statements> m_statements;
};

} // namespace plc::panel

#endif
