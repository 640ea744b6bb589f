#include "recorder/recording_place.h"

#include "recorder/recording_file.h"

namespace plc::recorder {
namespace {

constexpr qint64 kLookInterval = 1000; // ms

} // namespace

Expected<void> RecordingPlace::open(const QString& path, database::SqliteDatabase* database,
                                    qint64 now)
{
    if (Expected<void> locked = m_lock.take(path); !locked)
        return locked;
    if (Expected<void> opened = openToRecord(path, database); !opened)
        return opened;
    m_file = FileIdentity(path);
    m_journal = FileIdentity(path + QStringLiteral("-wal"));
    m_journalIndex = FileIdentity(path + QStringLiteral("-shm"));
    m_lookedAt = now;
    return {};
}

bool RecordingPlace::isTakenAway(qint64 now)
{
    if (qAbs(now - m_lookedAt) < kLookInterval)
        return false;
    m_lookedAt = now;
    return !m_file.isStill();
}

/// The journal stays beside the path when the file alone is moved. What it has comes into the file,
/// and then it goes, while its number cannot be another file's: the next database there would take
/// it for its own.
Expected<void> RecordingPlace::leave(database::SqliteDatabase* database)
{
    if (database->number("PRAGMA wal_checkpoint(TRUNCATE)").value_or(0) != 0)
        return Error{QStringLiteral("somebody still reads it")};
    m_journal.remove();
    m_journalIndex.remove();
    m_journal = FileIdentity();
    m_journalIndex = FileIdentity();
    database->close();
    return {};
}

} // namespace plc::recorder
