#ifndef PLC_PANEL_ALARMS_ALARM_HISTORY_H
#define PLC_PANEL_ALARMS_ALARM_HISTORY_H

#include <QtCore/QVector>

#include <memory>
#include <optional>

#include "database/sqlite_database.h"
#include "panel/alarms/alarm_engine.h"
#include "panel/alarms/alarm_occurrence.h"
#include "values/expected.h"

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
/// What save() has returned for is on the disk. While it is open, no other process can open it. For
/// one thread.
class AlarmHistory {
public:
    /// Creates the file if it does not exist.
    static Expected<std::unique_ptr<AlarmHistory>> open(const QString& path,
                                                        const AlarmHistoryLimits& limits);
    ~AlarmHistory();

    /// All or none; new ones, or known ones that have changed. What is beyond the limits is
    /// removed; by its age only at a time that is confirmed.
    Expected<void> save(const QVector<AlarmOccurrence>& occurrences,
                        std::optional<qint64> confirmed);

    /// The newest of each alarm that has not ended or is not acknowledged.
    Expected<QVector<KeptOccurrence>> kept();
    /// Those that were there at some time from `from` to `to`, both included: the newest first,
    /// `most` of them.
    Expected<QVector<AlarmOccurrence>> between(qint64 from, qint64 to, int most);
    /// Behind all numbers that were ever given.
    Expected<qint64> nextNumber();

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
