#ifndef PLC_LOG_SQLITE_LOG_H
#define PLC_LOG_SQLITE_LOG_H

#include <QtCore/QHash>

#include <memory>

#include "database/sqlite_database.h"
#include "log/log_writer.h"

namespace plc::log {

/// A log in an SQLite database as version 1.0 made them; new ones are recordings:
///
///   label(id, name)
///   sample(time, label, value, number, state)   label: its id; number: the value, or null
///   log                                         a view: time, label, value, number, state
///
/// Each write() is one transaction, so that a program that is killed leaves all of it or nothing.
class SqliteLog : public LogWriter {
public:
    /// Begins a log, or goes on with it where the file exists. A database that is no log
    /// is left as it is. `isMediumFailing`, unless null, tells whether an error came because
    /// nothing could be written, and not because of the path.
    static Expected<std::unique_ptr<SqliteLog>> open(const QString& path,
                                                     bool* isMediumFailing = nullptr);

    Expected<void> write(const QVector<LogRecord>& records) override;

private:
    SqliteLog() = default;

    bool prepare();
    LogState knownState(LogState state) const;
    bool insert(const QVector<LogRecord>& records);
    /// Returns -1 on failure.
    qint64 labelId(const QString& label);

    database::SqliteDatabase m_database;
    qint64 m_version = 0; ///< Of the tables.
    std::unique_ptr<database::SqliteStatement> m_insertLabel;
    std::unique_ptr<database::SqliteStatement> m_findLabel;
    std::unique_ptr<database::SqliteStatement> m_insertSample;
    QHash<QString, qint64> m_labelIds; ///< Of this program's run.
};

/// Whether the file exists and is such a log.
bool isLogDatabase(const QString& path);

/// Opens a database that holds a log.
Expected<void> openLogDatabase(const QString& path, database::SqliteDatabase* database);

} // namespace plc::log

#endif
