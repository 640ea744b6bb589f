#ifndef PLC_DATABASE_DATABASE_FILES_H
#define PLC_DATABASE_DATABASE_FILES_H

#include "database/file_identity.h"
#include "database/sqlite_database.h"

namespace plc::database {

/// The files of an open database, as they were when it was opened: they may be moved or removed.
class DatabaseFiles {
public:
    DatabaseFiles() = default;
    /// Of one that is open.
    explicit DatabaseFiles(const QString& path)
        : m_file(path),
          m_journal(path + QStringLiteral("-wal")),
          m_journalIndex(path + QStringLiteral("-shm"))
    {
    }

    QString path() const { return m_file.path(); }
    /// Whether the path leads to the same file; also when it cannot be told.
    bool isStill() const { return m_file.isStill(); }
    /// Closes one whose file was moved or removed: wherever it is now, it is whole. Says why it
    /// cannot be yet; empty: it is closed.
    QString leave(SqliteDatabase* database);

private:
    FileIdentity m_file;
    FileIdentity m_journal; ///< Beside it, as is its index.
    FileIdentity m_journalIndex;
};

} // namespace plc::database

#endif
