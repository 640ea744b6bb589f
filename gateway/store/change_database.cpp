#include "gateway/store/change_database.h"

#include <algorithm>

namespace plc::gateway {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

/// "plcs": tells a store from other databases.
constexpr qint64 kApplicationId = 0x706c6373;
constexpr qint64 kVersion = 1;

constexpr qint64 kQualityMask = 3;
constexpr qint64 kQualityIsNew = 4;

const char kSchema[] = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE device(id INTEGER PRIMARY KEY, name TEXT NOT NULL);
    CREATE TABLE metric(
        id INTEGER PRIMARY KEY,
        device INTEGER NOT NULL REFERENCES device(id),
        name TEXT NOT NULL,
        type TEXT NOT NULL);
    CREATE TABLE change(
        number INTEGER PRIMARY KEY,
        metric INTEGER NOT NULL REFERENCES metric(id),
        time INTEGER NOT NULL,
        state INTEGER NOT NULL,
        bytes BLOB NOT NULL);
    CREATE TABLE state(dropped INTEGER NOT NULL, session INTEGER NOT NULL, last INTEGER NOT NULL);
    INSERT INTO state VALUES(0, -1, 0);
    PRAGMA application_id = 0x706c6373;
    PRAGMA user_version = 1;
    COMMIT)";

// Held as long as it is open. A transaction that has ended outlives the process; the journal is
// brought onto the disk when it is taken in.
const char kMode[] =
    "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE; COMMIT";

const char kForgetUnusedNames[] = R"(
    BEGIN IMMEDIATE;
    DELETE FROM metric WHERE id NOT IN (SELECT metric FROM change);
    DELETE FROM device WHERE id NOT IN (SELECT device FROM metric);
    COMMIT)";

} // namespace

struct ChangeDatabase::Statements {
    explicit Statements(SqliteDatabase& database)
        : insertDevice(database, "INSERT INTO device(name) VALUES(?) RETURNING id"),
          insertMetric(database,
                       "INSERT INTO metric(device, name, type) VALUES(?, ?, ?) RETURNING id"),
          insertChange(database, "INSERT INTO change VALUES(?, ?, ?, ?, ?)"),
          removeUpTo(database, "DELETE FROM change WHERE number <= ?"),
          removeRange(database, "DELETE FROM change WHERE number BETWEEN ? AND ?"),
          lengths(database,
                  "SELECT number, length(bytes) FROM change WHERE number <= ? ORDER BY number"),
          save(database, "UPDATE state SET dropped = ?, session = ?, last = ?"),
          oldest(database,
                 "SELECT number, metric, time, state, bytes FROM change"
                 " WHERE number > ? ORDER BY number LIMIT ?"),
          countBehind(database, "SELECT count(*) FROM change WHERE number > ?")
    {
    }
    bool arePrepared() const
    {
        const SqliteStatement* const all[] = {&insertDevice, &insertMetric, &insertChange,
                                              &removeUpTo,   &removeRange,  &lengths,
                                              &save,         &oldest,       &countBehind};
        return std::all_of(std::begin(all), std::end(all), [](const SqliteStatement* statement) {
            return statement->isPrepared();
        });
    }

    SqliteStatement insertDevice;
    SqliteStatement insertMetric;
    SqliteStatement insertChange;
    SqliteStatement removeUpTo;
    SqliteStatement removeRange;
    SqliteStatement lengths;
    SqliteStatement save;
    SqliteStatement oldest;
    SqliteStatement countBehind;
};

void ChangeDatabase::StatementsDeleter::operator()(Statements* statements) const
{
    delete statements;
}

ChangeDatabase::Opening ChangeDatabase::open(const QString& path, const StoreLimits& limits)
{
    Opening opening;
    std::unique_ptr<ChangeDatabase> database(new ChangeDatabase);
    if (database->openFile(path, &opening) && database->prepareTables(limits, &opening)) {
        opening.database = std::move(database);
    } else if (opening.error.isEmpty()) {
        opening.error = database->error();
        opening.isDamaged = database->isDamaged();
        opening.isMediumFailing = database->isMediumFailing();
    }
    return opening;
}

/// Opens the file for this process alone and finds out whether it is a store.
bool ChangeDatabase::openFile(const QString& path, Opening* opening)
{
    m_path = path;
    if (!m_database.open(path, true))
        return false;
    m_database.growInSteps(int(kGrowthPages * kPageSize));
    if (!m_database.execute(kMode)) {
        if (m_database.isHeldByAnother())
            opening->error = QStringLiteral(
                                 "%1: the store is in use by another process; give each gateway a "
                                 "store of its own")
                                 .arg(path);
        return false;
    }
    const std::optional<qint64> id = m_database.number("PRAGMA application_id");
    const std::optional<qint64> version = m_database.number("PRAGMA user_version");
    const std::optional<qint64> tables = m_database.number("SELECT count(*) FROM sqlite_master");
    if (!id || !version || !tables)
        return false;
    if (*tables == 0)
        return m_database.execute(kSchema);
    if (*id != kApplicationId)
        opening->error =
            QStringLiteral("%1: the database exists and is no store of changes; name another file")
                .arg(path);
    else if (*version != kVersion)
        opening->error = QStringLiteral(
                             "%1: the store was made by another version of this program (%2, here "
                             "%3); name another file")
                             .arg(path)
                             .arg(*version)
                             .arg(kVersion);
    return opening->error.isEmpty();
}

bool ChangeDatabase::prepareTables(const StoreLimits& limits, Opening* opening)
{
    opening->state = loadState();
    opening->count = m_database.number("SELECT count(*) FROM change");
    if (!opening->state || !opening->count)
        return false;
    SqliteStatement check(m_database, "PRAGMA quick_check(1)");
    if (!check.isPrepared() || check.step() != SqliteStatement::Row)
        return false;
    const QString finding = check.text(0);
    check.reset();
    if (finding != QLatin1String("ok")) {
        opening->error = finding;
        opening->isDamaged = true;
        return false;
    }
    // The journal is taken in when it is half as long as it may be: the other half is for the
    // transaction that makes it longer.
    const QString journal = QStringLiteral(
                                "PRAGMA wal_autocheckpoint = %1;"
                                "PRAGMA journal_size_limit = %2")
                                .arg(limits.journalPages / 2)
                                .arg(limits.journalPages * kPageSize);
    return m_database.execute(journal.toLatin1().constData()) && forgetUnusedNames() &&
           prepareStatements() && loadNames();
}

/// A full disk is no reason not to begin.
bool ChangeDatabase::forgetUnusedNames()
{
    if (m_database.execute(kForgetUnusedNames))
        return true;
    if (!m_database.isMediumFailing())
        return false;
    m_database.execute("ROLLBACK");
    return true;
}

bool ChangeDatabase::prepareStatements()
{
    m_statements.reset(new Statements(m_database));
    return m_statements->arePrepared();
}

bool ChangeDatabase::loadNames()
{
    SqliteStatement names(m_database,
                          "SELECT metric.id, device.id, device.name, metric.name, metric.type"
                          " FROM metric JOIN device ON device.id = metric.device");
    if (!names.isPrepared())
        return false;
    SqliteStatement::Step step = names.step();
    for (; step == SqliteStatement::Row; step = names.step()) {
        const MetricName metric{names.text(2), names.text(3), names.text(4)};
        m_names.deviceIds.insert(metric.device, names.number(1));
        m_names.metricIds.insert({metric.device, {metric.name, metric.type}}, names.number(0));
        m_names.metrics.insert(names.number(0), metric);
    }
    return step == SqliteStatement::Done;
}

std::optional<StoreState> ChangeDatabase::loadState()
{
    SqliteStatement statement(m_database, "SELECT dropped, session, last FROM state");
    if (!statement.isPrepared() || statement.step() != SqliteStatement::Row)
        return {};
    StoreState state;
    state.dropped = quint64(statement.number(0));
    state.session = int(statement.number(1));
    state.last = statement.number(2);
    return state;
}

bool ChangeDatabase::begin()
{
    m_namesBefore = m_names;
    m_isFull = false;
    return m_database.execute("BEGIN IMMEDIATE");
}

bool ChangeDatabase::commit()
{
    return m_database.execute("COMMIT");
}

void ChangeDatabase::rollback()
{
    // After some errors SQLite has done so itself; then this one fails and changes nothing.
    m_database.execute("ROLLBACK");
    m_names = m_namesBefore;
}

std::optional<qint64> ChangeDatabase::deviceId(const QString& name)
{
    const auto known = m_names.deviceIds.constFind(name);
    if (known != m_names.deviceIds.constEnd())
        return *known;
    SqliteStatement& insert = m_statements->insertDevice;
    if (insert.bind(0, name).step() != SqliteStatement::Row)
        return {};
    const qint64 id = insert.number(0);
    if (insert.step() != SqliteStatement::Done)
        return {};
    m_names.deviceIds.insert(name, id);
    return id;
}

std::optional<qint64> ChangeDatabase::metricId(const StoredChange& change)
{
    const MetricKey key = keyOf(change);
    const auto known = m_names.metricIds.constFind(key);
    if (known != m_names.metricIds.constEnd())
        return *known;
    const std::optional<qint64> device = deviceId(change.device);
    if (!device)
        return {};
    SqliteStatement& insert = m_statements->insertMetric;
    insert.bind(0, *device).bind(1, change.metric).bind(2, change.type);
    if (insert.step() != SqliteStatement::Row)
        return {};
    const qint64 id = insert.number(0);
    if (insert.step() != SqliteStatement::Done)
        return {};
    m_names.metricIds.insert(key, id);
    m_names.metrics.insert(id, {change.device, change.metric, change.type});
    return id;
}

bool ChangeDatabase::insert(qint64 number, const StoredChange& change)
{
    const std::optional<qint64> metric = metricId(change);
    if (!metric)
        return false;
    const qint64 state = qint64(change.quality) | (change.isQualityNew ? kQualityIsNew : 0);
    m_statements->insertChange.bind(0, number)
        .bind(1, *metric)
        .bind(2, change.time)
        .bind(3, state)
        .bind(4, change.bytes);
    return m_statements->insertChange.step() == SqliteStatement::Done;
}

std::optional<qint64> ChangeDatabase::removeOldest(qint64 bytes, qint64 last)
{
    SqliteStatement& row = m_statements->lengths;
    row.bind(0, last);
    qint64 number = 0;
    qint64 sum = 0;
    SqliteStatement::Step step = row.step();
    for (; step == SqliteStatement::Row && sum < bytes; step = row.step()) {
        number = row.number(0);
        sum += kRowOverhead + row.number(1);
    }
    if (step == SqliteStatement::Failed)
        return {};
    row.reset();
    if (number == 0)
        return 0;
    if (m_statements->removeUpTo.bind(0, number).step() != SqliteStatement::Done)
        return {};
    return m_database.changedRows();
}

std::optional<qint64> ChangeDatabase::removeRange(qint64 first, qint64 last)
{
    SqliteStatement& remove = m_statements->removeRange;
    if (remove.bind(0, first).bind(1, last).step() != SqliteStatement::Done)
        return {};
    return m_database.changedRows();
}

bool ChangeDatabase::save(const StoreState& state)
{
    m_statements->save.bind(0, qint64(state.dropped))
        .bind(1, qint64(state.session))
        .bind(2, state.last);
    return m_statements->save.step() == SqliteStatement::Done;
}

std::optional<QVector<StoredChange>> ChangeDatabase::oldest(qint64 behind, int count)
{
    QVector<StoredChange> changes;
    SqliteStatement& row = m_statements->oldest;
    row.bind(0, behind).bind(1, qint64(count));
    SqliteStatement::Step step = row.step();
    for (; step == SqliteStatement::Row; step = row.step()) {
        const MetricName metric = m_names.metrics.value(row.number(1));
        StoredChange change;
        change.number = row.number(0);
        change.device = metric.device;
        change.metric = metric.name;
        change.type = metric.type;
        change.time = row.number(2);
        change.quality = Quality(row.number(3) & kQualityMask);
        change.isQualityNew = (row.number(3) & kQualityIsNew) != 0;
        change.bytes = row.bytes(4);
        changes.append(change);
    }
    return step == SqliteStatement::Done ? std::optional(changes) : std::nullopt;
}

std::optional<qint64> ChangeDatabase::countBehind(qint64 number)
{
    SqliteStatement& count = m_statements->countBehind;
    if (count.bind(0, number).step() != SqliteStatement::Row)
        return {};
    const qint64 changes = count.number(0);
    count.reset();
    return changes;
}

std::optional<qint64> ChangeDatabase::usedPages()
{
    const std::optional<qint64> all = m_database.number("PRAGMA page_count");
    const std::optional<qint64> free = m_database.number("PRAGMA freelist_count");
    return all && free ? std::optional(*all - *free) : std::nullopt;
}

bool ChangeDatabase::reserve(qint64 pages)
{
    const std::optional<qint64> all = m_database.number("PRAGMA page_count");
    const std::optional<qint64> used = usedPages();
    if (!all || !used)
        return false;
    m_isFull = !m_database.reserve(std::max(*all, *used + pages) * kPageSize);
    return !m_isFull;
}

QString ChangeDatabase::error() const
{
    return m_isFull ? QStringLiteral("%1: the disk is full").arg(m_path) : m_database.error();
}

bool ChangeDatabase::shrink(const StoreLimits& limits)
{
    const std::optional<qint64> pages = m_database.number("PRAGMA page_count");
    if (!pages || *pages <= limits.databasePages)
        return pages.has_value();
    return m_database.execute("VACUUM") &&
           m_database.number("PRAGMA wal_checkpoint(TRUNCATE)").has_value();
}

} // namespace plc::gateway
