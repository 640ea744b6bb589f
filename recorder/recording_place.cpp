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
    m_files = database::DatabaseFiles(path);
    m_lookedAt = now;
    return {};
}

bool RecordingPlace::isTakenAway(qint64 now)
{
    if (qAbs(now - m_lookedAt) < kLookInterval)
        return false;
    m_lookedAt = now;
    return !isThere();
}

Expected<void> RecordingPlace::leave(database::SqliteDatabase* database)
{
    const QString obstacle = m_files.leave(database);
    if (!obstacle.isEmpty())
        return Error{obstacle};
    return {};
}

} // namespace plc::recorder
