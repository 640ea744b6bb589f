#ifndef PLC_RECORDER_RECORDING_PLACE_H
#define PLC_RECORDER_RECORDING_PLACE_H

#include "database/database_files.h"
#include "recorder/write_lock.h"

namespace plc::recorder {

/// Where a recording is kept: a path that is locked, and the files to which it led when it was
/// opened.
class RecordingPlace {
public:
    /// Locks the path and opens the recording there, which it begins where there is none. Times are
    /// in ms.
    Expected<void> open(const QString& path, database::SqliteDatabase* database, qint64 now);
    QString path() const { return m_files.path(); }
    bool isThere() const { return m_files.isStill(); }
    /// Whether the file was moved or removed; looks once a second.
    bool isTakenAway(qint64 now);
    /// Closes one that was: wherever it is now, it is whole. An error as long as somebody reads it.
    Expected<void> leave(database::SqliteDatabase* database);

private:
    WriteLock m_lock;
    database::DatabaseFiles m_files;
    qint64 m_lookedAt = 0;
};

} // namespace plc::recorder

#endif
