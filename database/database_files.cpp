#include "database/database_files.h"

namespace plc::database {

/// The journal stays beside the path when the file alone is moved. What it has comes into the file,
/// and then it goes, while its number cannot be another file's: the next database there would take
/// it for its own.
QString DatabaseFiles::leave(SqliteDatabase* database)
{
    const std::optional<qint64> isHeld = database->number("PRAGMA wal_checkpoint(TRUNCATE)");
    if (!isHeld && database->isMediumFailing())
        return database->error();
    if (isHeld.value_or(0) != 0)
        return QStringLiteral("somebody still reads it");
    m_journal.remove();
    m_journalIndex.remove();
    m_journal = FileIdentity();
    m_journalIndex = FileIdentity();
    database->close();
    return {};
}

} // namespace plc::database
