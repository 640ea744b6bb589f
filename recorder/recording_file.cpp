#include "recorder/recording_file.h"

namespace plc::recorder {
namespace {

/// "plcr": tells a recording from other databases.
constexpr qint64 kApplicationId = 0x706c6372;
constexpr qint64 kVersion = 1;

// The one index finds the last block that begins before a time, the other one the oldest.
constexpr char kSchema[] = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE series(
        id INTEGER PRIMARY KEY,
        source TEXT NOT NULL,
        label TEXT NOT NULL,
        type TEXT NOT NULL,
        elements INTEGER NOT NULL,
        capacity INTEGER NOT NULL,
        unit TEXT NOT NULL,
        deadband REAL NOT NULL);
    CREATE TABLE run(
        id INTEGER PRIMARY KEY,
        begin INTEGER NOT NULL,
        first INTEGER NOT NULL,
        until INTEGER NOT NULL,
        ending INTEGER NOT NULL);
    CREATE TABLE batch(
        id INTEGER PRIMARY KEY,
        run INTEGER NOT NULL,
        time INTEGER NOT NULL,
        changes BLOB NOT NULL);
    CREATE TABLE block(
        id INTEGER PRIMARY KEY,
        series INTEGER NOT NULL,
        run INTEGER NOT NULL,
        first INTEGER NOT NULL,
        last INTEGER NOT NULL,
        count INTEGER NOT NULL,
        samples BLOB NOT NULL);
    CREATE INDEX block_by_time ON block(series, run, first);
    CREATE INDEX block_by_age ON block(run, last);
    CREATE TABLE horizon(run INTEGER NOT NULL, time INTEGER NOT NULL);
    INSERT INTO horizon VALUES(0, 0);
    PRAGMA application_id = 0x706c6372;
    PRAGMA user_version = 1;
    COMMIT)";

// Readers do not disturb the one that records, and each transaction is on the disk when it has
// ended. The journal is taken in at 1,000 pages and cut back to as much where more was needed.
constexpr char kSafety[] =
    "PRAGMA auto_vacuum = INCREMENTAL; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
    "PRAGMA wal_autocheckpoint = 1000; PRAGMA journal_size_limit = 4194304";

Expected<void> checkKind(const QString& path, qint64 id, qint64 version)
{
    if (id != kApplicationId) {
        return Error{
            QStringLiteral("%1: the database exists and is no recording; name another file")
                .arg(path)};
    }
    if (version != kVersion) {
        return Error{QStringLiteral("%1: the recording was made by another version of this program "
                                    "(%2, here %3); name another file")
                         .arg(path)
                         .arg(version)
                         .arg(kVersion)};
    }
    return {};
}

} // namespace

Expected<void> openToRecord(const QString& path, database::SqliteDatabase* database)
{
    if (!database->open(path, true))
        return Error{database->error()};
    const std::optional<qint64> tables = database->number("SELECT count(*) FROM sqlite_master");
    const std::optional<qint64> id = database->number("PRAGMA application_id");
    const std::optional<qint64> version = database->number("PRAGMA user_version");
    if (!tables || !id || !version)
        return Error{database->error()};
    if (*tables > 0) {
        if (Expected<void> isOurs = checkKind(path, *id, *version); !isOurs)
            return isOurs;
    }
    if (!database->execute(kSafety) || (*tables == 0 && !database->execute(kSchema)))
        return Error{database->error()};
    return {};
}

Expected<void> openToRead(const QString& path, database::SqliteDatabase* database)
{
    // A connection that may not write at all leaves the journal behind when it is the last one.
    if (!database->open(path, false))
        return Error{database->error()};
    const std::optional<qint64> id = database->number("PRAGMA application_id");
    const std::optional<qint64> version = database->number("PRAGMA user_version");
    if (!id || !version || !database->execute("PRAGMA query_only = 1"))
        return Error{database->error()};
    return checkKind(path, *id, *version);
}

bool isRecording(const QString& path)
{
    database::SqliteDatabase database;
    return database.open(path, false) &&
           database.number("PRAGMA application_id").value_or(0) == kApplicationId;
}

} // namespace plc::recorder
