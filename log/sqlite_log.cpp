#include "log/sqlite_log.h"
#include "values/utc_time.h"

namespace plc::log {
namespace {

/// "plcl": tells a log from other databases.
constexpr qint64 kApplicationId = 0x706c636c;

constexpr qint64 kVersionWithRefusals = 2;

// Times are texts: SQLite's own functions take them, they sort, and CSV has them alike.
constexpr char kSchema[] = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE label(
        id INTEGER PRIMARY KEY,
        name TEXT NOT NULL UNIQUE);
    CREATE TABLE sample(
        id INTEGER PRIMARY KEY,
        time TEXT NOT NULL,
        label INTEGER NOT NULL REFERENCES label(id),
        value TEXT NOT NULL,
        number REAL,
        state TEXT NOT NULL CHECK(state IN ('fresh', 'stale', 'refused')));
    CREATE INDEX sample_by_label ON sample(label, time);
    CREATE VIEW log AS
        SELECT sample.time AS time, label.name AS label, sample.value AS value,
               sample.number AS number, sample.state AS state
        FROM sample JOIN label ON label.id = sample.label
        ORDER BY sample.id;
    PRAGMA application_id = 0x706c636c;
    PRAGMA user_version = 2;
    COMMIT)";

// Readers do not disturb the writer, and each transaction is on the disk when it has ended.
constexpr char kSafety[] = "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL";

/// Whether the database holds a log; nothing when it cannot be read.
std::optional<bool> isLog(database::SqliteDatabase* database)
{
    const std::optional<qint64> id = database->number("PRAGMA application_id");
    return id ? std::optional<bool>(*id == kApplicationId) : std::nullopt;
}

Error refusal(const QString& path)
{
    return {QStringLiteral("%1: the database exists and is no log of plc; name another file")
                .arg(path)};
}

Expected<void> openOrBegin(const QString& path, database::SqliteDatabase* database)
{
    if (!database->open(path, true))
        return Error{database->error()};
    const std::optional<qint64> tables = database->number("SELECT count(*) FROM sqlite_master");
    const std::optional<bool> isOurs = isLog(database);
    if (tables && isOurs && !*isOurs && *tables > 0)
        return refusal(path);
    const bool isNew = tables && *tables == 0;
    if (!tables || !isOurs || !database->execute(kSafety) || (isNew && !database->execute(kSchema)))
        return Error{database->error()};
    return {};
}

} // namespace

bool isLogDatabase(const QString& path)
{
    database::SqliteDatabase database;
    return database.open(path, false) && isLog(&database).value_or(false);
}

Expected<void> openLogDatabase(const QString& path, database::SqliteDatabase* database)
{
    const std::optional<bool> isOurs =
        database->open(path, false) ? isLog(database) : std::optional<bool>();
    if (!isOurs)
        return Error{database->error()};
    if (!*isOurs)
        return refusal(path);
    return {};
}

Expected<std::unique_ptr<SqliteLog>> SqliteLog::open(const QString& path, bool* isMediumFailing)
{
    std::unique_ptr<SqliteLog> log(new SqliteLog);
    Expected<void> opened = openOrBegin(path, &log->m_database);
    if (opened && !log->prepare())
        opened = Error{log->m_database.error()};
    if (isMediumFailing)
        *isMediumFailing = !opened && log->m_database.isMediumFailing();
    if (!opened)
        return opened.error();
    return log;
}

/// Logs of the first version have no word for what is refused.
LogState SqliteLog::knownState(LogState state) const
{
    return state == LogState::Refused && m_version < kVersionWithRefusals ? LogState::Stale : state;
}

bool SqliteLog::prepare()
{
    m_version = m_database.number("PRAGMA user_version").value_or(0);
    const auto statement = [this](const char* text) {
        return std::make_unique<database::SqliteStatement>(m_database, text);
    };
    m_insertLabel = statement("INSERT OR IGNORE INTO label(name) VALUES(?)");
    m_findLabel = statement("SELECT id FROM label WHERE name = ?");
    m_insertSample =
        statement("INSERT INTO sample(time, label, value, number, state) VALUES(?, ?, ?, ?, ?)");
    return m_insertLabel->isPrepared() && m_findLabel->isPrepared() && m_insertSample->isPrepared();
}

Expected<void> SqliteLog::write(const QVector<LogRecord>& records)
{
    if (records.isEmpty())
        return {};
    if (m_database.execute("BEGIN IMMEDIATE") && insert(records) && m_database.execute("COMMIT"))
        return {};
    const Error error{m_database.error()};
    // After some errors SQLite has done so itself; then this one fails and changes nothing.
    m_database.execute("ROLLBACK");
    m_labelIds.clear();
    return error;
}

bool SqliteLog::insert(const QVector<LogRecord>& records)
{
    for (const LogRecord& record : records) {
        const qint64 label = labelId(record.label);
        if (label < 0)
            return false;
        m_insertSample->bind(0, values::utcTimeText(record.time))
            .bind(1, label)
            .bind(2, record.value)
            .bind(3, record.number)
            .bind(4, logStateWord(knownState(record.state)));
        if (m_insertSample->step() != database::SqliteStatement::Done)
            return false;
    }
    return true;
}

qint64 SqliteLog::labelId(const QString& label)
{
    const auto known = m_labelIds.constFind(label);
    if (known != m_labelIds.constEnd())
        return *known;
    if (m_insertLabel->bind(0, label).step() != database::SqliteStatement::Done)
        return -1;
    if (m_findLabel->bind(0, label).step() != database::SqliteStatement::Row)
        return -1;
    const qint64 id = m_findLabel->number(0);
    m_findLabel->step(); // to its end
    m_labelIds.insert(label, id);
    return id;
}

} // namespace plc::log
