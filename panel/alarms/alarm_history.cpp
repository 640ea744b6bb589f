#include "panel/alarms/alarm_history.h"

#include <algorithm>
#include <limits>

#include "values/value_bits.h"

namespace plc::panel {

using database::SqliteStatement;
using values::Value;

namespace {

/// "plca": tells a history of alarms from other databases.
constexpr qint64 kApplicationId = 0x706c6361;
constexpr qint64 kVersion = 1;

// The number of an occurrence is never given twice, also when the newest were removed.
const char kSchema[] = R"(
    BEGIN IMMEDIATE;
    CREATE TABLE alarm(
        id INTEGER PRIMARY KEY,
        key TEXT NOT NULL,
        plc TEXT NOT NULL,
        label TEXT NOT NULL,
        text TEXT NOT NULL,
        condition TEXT NOT NULL,
        UNIQUE(key, text));
    CREATE TABLE occurrence(
        number INTEGER PRIMARY KEY AUTOINCREMENT,
        alarm INTEGER NOT NULL REFERENCES alarm(id),
        began INTEGER NOT NULL,
        kind INTEGER NOT NULL,
        bits INTEGER NOT NULL,
        words TEXT NOT NULL,
        ended INTEGER,
        acknowledgedBy TEXT NOT NULL,
        acknowledgedAt INTEGER,
        flags INTEGER NOT NULL);
    CREATE INDEX occurrenceBegan ON occurrence(began);
    CREATE INDEX occurrenceOfAlarm ON occurrence(alarm, number);
    PRAGMA application_id = 0x706c6361;
    PRAGMA user_version = 1;
    COMMIT)";

// Those that files of before do not have.
const char kIndices[] =
    "CREATE INDEX IF NOT EXISTS occurrenceEnded ON occurrence(ended) WHERE ended IS NOT NULL";

// Held as long as it is open. Whoever is told that an alarm was acknowledged relies on it, so a
// transaction is on the disk when it has ended.
const char kMode[] =
    "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL; BEGIN IMMEDIATE; COMMIT";

const char kColumns[] =
    "SELECT number, key, plc, label, text, condition, began, kind, bits, words, ifnull(ended, -1),"
    " acknowledgedBy, ifnull(acknowledgedAt, -1), flags";

const char kBetween[] =
    " FROM occurrence JOIN alarm ON alarm.id = occurrence.alarm"
    " WHERE began <= ? AND (ended IS NULL OR ended >= ?)"
    " ORDER BY began DESC, number DESC LIMIT ?";

// The last column: how many were not acknowledged before, since one was.
const char kKept[] =
    ", (SELECT count(*) FROM occurrence o JOIN alarm a ON a.id = o.alarm WHERE a.key = alarm.key"
    "  AND o.number < occurrence.number AND o.acknowledgedAt IS NULL"
    "  AND o.number > ifnull((SELECT max(p.number) FROM occurrence p JOIN alarm b ON b.id = p.alarm"
    "   WHERE b.key = alarm.key AND p.acknowledgedAt IS NOT NULL), 0))"
    " FROM occurrence JOIN alarm ON alarm.id = occurrence.alarm"
    " WHERE (ended IS NULL OR acknowledgedAt IS NULL) AND number ="
    " (SELECT max(o.number) FROM occurrence o JOIN alarm a ON a.id = o.alarm"
    "  WHERE a.key = alarm.key)"
    " ORDER BY number";

// Of the past all that may still change, and that tells how often somebody did not look.
const char kOpen[] =
    " FROM occurrence JOIN alarm ON alarm.id = occurrence.alarm LEFT JOIN"
    " (SELECT a.key AS of, max(o.number) AS last FROM occurrence o JOIN alarm a ON a.id = o.alarm"
    "  WHERE o.acknowledgedAt IS NOT NULL GROUP BY a.key) ON of = alarm.key"
    " WHERE ended IS NULL OR (acknowledgedAt IS NULL AND number > ifnull(last, 0))"
    " ORDER BY number";

// What has not ended stays, and the newest of each alarm while it is not acknowledged.
const char kRemoveOld[] =
    "DELETE FROM occurrence WHERE ended IS NOT NULL AND (ended < ?1 OR number <= ?2)"
    " AND (acknowledgedAt IS NOT NULL OR number <"
    " (SELECT max(o.number) FROM occurrence o WHERE o.alarm = occurrence.alarm))";

enum Flag { kBeginUnseen = 1, kEndUnseen = 2, kGap = 4, kRestart = 8, kWatchLost = 16 };

/// No value, or the place of its kind in the variant.
constexpr qint64 kNoValue = -1;
constexpr qint64 kText = 5;

qint64 flagsOf(const AlarmOccurrence& occurrence)
{
    return (occurrence.isBeginUnseen ? kBeginUnseen : 0) |
           (occurrence.isEndUnseen ? kEndUnseen : 0) | (occurrence.hasGap ? kGap : 0) |
           (occurrence.hasRestart ? kRestart : 0) | (occurrence.isWatchLost ? kWatchLost : 0);
}

std::optional<Value> valueOf(qint64 kind, quint64 bits, const QString& words)
{
    static const char* const kTypes[] = {"BOOL", "LINT", "ULINT", "REAL", "LREAL"};
    if (kind == kText)
        return Value(words);
    if (kind < 0 || kind > kText)
        return {};
    return values::valueOfBits(*values::findIecType(std::string_view(kTypes[kind])), bits);
}

std::optional<qint64> timeOf(qint64 stored)
{
    return stored < 0 ? std::nullopt : std::optional<qint64>(stored);
}

AlarmOccurrence occurrenceOf(const SqliteStatement& row)
{
    AlarmOccurrence found;
    found.number = row.number(0);
    found.alarm = row.text(1);
    found.plc = row.text(2);
    found.label = row.text(3);
    found.text = row.text(4);
    found.condition = row.text(5);
    found.begin = row.number(6);
    found.value = valueOf(row.number(7), quint64(row.number(8)), row.text(9));
    found.end = timeOf(row.number(10));
    found.acknowledgedBy = row.text(11);
    found.acknowledgedAt = timeOf(row.number(12));
    const qint64 flags = row.number(13);
    found.isBeginUnseen = (flags & kBeginUnseen) != 0;
    found.isEndUnseen = (flags & kEndUnseen) != 0;
    found.hasGap = (flags & kGap) != 0;
    found.hasRestart = (flags & kRestart) != 0;
    found.isWatchLost = (flags & kWatchLost) != 0;
    return found;
}

} // namespace

struct AlarmHistory::Statements {
    explicit Statements(database::SqliteDatabase& database)
        : addAlarm(database,
                   "INSERT INTO alarm(key, plc, label, text, condition) VALUES(?, ?, ?, ?, ?)"
                   " ON CONFLICT DO NOTHING"),
          add(database,
              "INSERT INTO occurrence SELECT ?, (SELECT id FROM alarm WHERE key = ? AND text = ?),"
              " ?, ?, ?, ?, NULL, '', NULL, 0 WHERE true ON CONFLICT DO NOTHING"),
          update(database,
                 "UPDATE occurrence SET ended = nullif(?, -1), acknowledgedBy = ?,"
                 " acknowledgedAt = nullif(?, -1), flags = ? WHERE number = ?"),
          removeOld(database, kRemoveOld),
          kept(database, (QByteArray(kColumns) + kKept).constData()),
          between(database, (QByteArray(kColumns) + kBetween).constData())
    {
    }
    bool arePrepared() const
    {
        const SqliteStatement* const all[] = {&addAlarm,  &add,  &update,
                                              &removeOld, &kept, &between};
        return std::all_of(std::begin(all), std::end(all), [](const SqliteStatement* statement) {
            return statement->isPrepared();
        });
    }

    SqliteStatement addAlarm;
    SqliteStatement add;
    SqliteStatement update;
    SqliteStatement removeOld;
    SqliteStatement kept;
    SqliteStatement between;
};

AlarmHistory::~AlarmHistory()
{
    m_statements.reset();
    if (m_database.handle() && !m_files.isStill())
        static_cast<void>(m_files.leave(&m_database));
}

Error AlarmHistory::failed() const
{
    return {m_database.error()};
}

Expected<std::unique_ptr<AlarmHistory>> AlarmHistory::open(const QString& path,
                                                           const AlarmHistoryLimits& limits)
{
    std::unique_ptr<AlarmHistory> history(new AlarmHistory);
    history->m_limits = limits;
    if (const Expected<void> isPrepared = history->prepare(path); !isPrepared)
        return isPrepared.error();
    const Expected<qint64> next = history->followingNumber();
    if (!next)
        return next.error();
    history->m_lastNumber = *next - 1;
    return history;
}

/// Whether the database is empty. An error where it is something else, which is left as it is.
Expected<bool> AlarmHistory::checkKind(const QString& path)
{
    const std::optional<qint64> id = m_database.number("PRAGMA application_id");
    const std::optional<qint64> version = m_database.number("PRAGMA user_version");
    const std::optional<qint64> tables = m_database.number("SELECT count(*) FROM sqlite_master");
    if (!id || !version || !tables)
        return cannotOpen(path);
    if (*tables > 0 && *id != kApplicationId)
        return Error{QStringLiteral("%1: the database exists and is no history of alarms; name "
                                    "another file")
                         .arg(path)};
    if (*tables > 0 && *version != kVersion)
        return Error{QStringLiteral("%1: the history of alarms was made by another version of this "
                                    "program (%2, here %3); name another file")
                         .arg(path)
                         .arg(*version)
                         .arg(kVersion)};
    return *tables == 0;
}

Error AlarmHistory::cannotOpen(const QString& path) const
{
    if (!m_database.isHeldByAnother())
        return failed();
    return {QStringLiteral("%1: the history of alarms is in use by another process; give each "
                           "panel one of its own")
                .arg(path)};
}

Expected<void> AlarmHistory::prepare(const QString& path)
{
    if (!m_database.open(path, true))
        return failed();
    const Expected<bool> isEmpty = checkKind(path);
    if (!isEmpty)
        return isEmpty.error();
    if (!m_database.execute(kMode))
        return cannotOpen(path);
    if ((*isEmpty && !m_database.execute(kSchema)) || !m_database.execute(kIndices))
        return failed();
    m_statements = std::make_unique<Statements>(m_database);
    if (!m_statements->arePrepared())
        return failed();
    m_files = database::DatabaseFiles(path);
    return {};
}

/// Looking is as good as nothing beside what follows it, so that hardly anything is written into a
/// file that was taken away.
Expected<void> AlarmHistory::look()
{
    if (m_statements && m_files.isStill())
        return {};
    m_statements.reset();
    const QString path = m_files.path();
    Expected<void> begun = leave();
    if (begun)
        begun = begin(path);
    if (begun)
        return {};
    return Error{QStringLiteral("%1: the history of alarms was moved or removed while it was open, "
                                "and none can be begun in its place: %2")
                     .arg(path, begun.error().text)};
}

Expected<void> AlarmHistory::leave()
{
    if (!m_database.handle())
        return {};
    const Expected<QVector<AlarmOccurrence>> open = openOnes();
    if (!open && !m_database.isDamaged())
        return open.error();
    // Nothing more can be had of a damaged one.
    m_carried = open.valueOr({});
    const QString obstacle = m_files.leave(&m_database);
    if (!obstacle.isEmpty())
        return Error{obstacle};
    return {};
}

Expected<void> AlarmHistory::begin(const QString& path)
{
    Expected<void> begun = prepare(path);
    if (begun)
        begun = checkNumbers();
    if (begun && !carryOver()) {
        begun = failed();
        m_database.execute("ROLLBACK");
    }
    if (!begun) {
        m_statements.reset();
        m_database.close();
        return begun;
    }
    m_carried.clear();
    ++m_changedFiles;
    return {};
}

/// What lies there may have been put there: of another history, which gave numbers of its own.
Expected<void> AlarmHistory::checkNumbers()
{
    const Expected<qint64> next = followingNumber();
    if (!next)
        return next.error();
    bool isOther = *next > m_lastNumber + 1;
    SqliteStatement same(m_database,
                         "SELECT count(*) FROM occurrence JOIN alarm ON alarm.id = occurrence.alarm"
                         " WHERE number = ? AND (key <> ? OR began <> ?)");
    for (const AlarmOccurrence& occurrence : std::as_const(m_carried)) {
        same.bind(0, occurrence.number).bind(1, occurrence.alarm).bind(2, occurrence.begin);
        if (same.step() != SqliteStatement::Row)
            return failed();
        isOther = isOther || same.number(0) > 0;
        same.reset();
    }
    if (isOther)
        return Error{
            QStringLiteral("another history lies there; move it away, or start again to go "
                           "on with it")};
    return {};
}

bool AlarmHistory::carryOver()
{
    bool isCarried = m_database.execute("BEGIN IMMEDIATE");
    for (const AlarmOccurrence& occurrence : std::as_const(m_carried))
        isCarried = isCarried && saveOne(occurrence);
    // An empty table has no row yet.
    SqliteStatement add(m_database,
                        "INSERT INTO sqlite_sequence(name, seq) SELECT 'occurrence', 0 WHERE NOT"
                        " EXISTS(SELECT 1 FROM sqlite_sequence WHERE name = 'occurrence')");
    SqliteStatement raise(m_database,
                          "UPDATE sqlite_sequence SET seq = max(seq, ?)"
                          " WHERE name = 'occurrence'");
    raise.bind(0, m_lastNumber);
    isCarried =
        isCarried && add.step() == SqliteStatement::Done && raise.step() == SqliteStatement::Done;
    return isCarried && m_database.execute("COMMIT");
}

Expected<QVector<AlarmOccurrence>> AlarmHistory::openOnes()
{
    SqliteStatement rows(m_database, (QByteArray(kColumns) + kOpen).constData());
    return allOf(&rows);
}

Expected<void> AlarmHistory::save(const QVector<AlarmOccurrence>& occurrences,
                                  std::optional<qint64> confirmed)
{
    if (Expected<void> there = look(); !there)
        return there;
    for (const AlarmOccurrence& occurrence : occurrences)
        m_lastNumber = std::max(m_lastNumber, occurrence.number);
    bool isSaved = m_database.execute("BEGIN IMMEDIATE");
    for (const AlarmOccurrence& occurrence : occurrences)
        isSaved = isSaved && saveOne(occurrence);
    isSaved = isSaved && removeOld(confirmed) && m_database.execute("COMMIT");
    if (isSaved)
        return {};
    const Error error = failed();
    m_database.execute("ROLLBACK");
    return error;
}

bool AlarmHistory::saveOne(const AlarmOccurrence& occurrence)
{
    m_statements->addAlarm.bind(0, occurrence.alarm)
        .bind(1, occurrence.plc)
        .bind(2, occurrence.label)
        .bind(3, occurrence.text)
        .bind(4, occurrence.condition);
    if (m_statements->addAlarm.step() != SqliteStatement::Done)
        return false;
    const std::optional<Value>& value = occurrence.value;
    const auto* words = value ? std::get_if<QString>(&*value) : nullptr;
    m_statements->add.bind(0, occurrence.number)
        .bind(1, occurrence.alarm)
        .bind(2, occurrence.text)
        .bind(3, occurrence.begin)
        .bind(4, value ? qint64(value->index()) : kNoValue)
        .bind(5, value ? qint64(values::valueBits(*value)) : 0)
        .bind(6, words ? *words : QString());
    if (m_statements->add.step() != SqliteStatement::Done)
        return false;
    m_statements->update.bind(0, occurrence.end.value_or(-1))
        .bind(1, occurrence.acknowledgedBy)
        .bind(2, occurrence.acknowledgedAt.value_or(-1))
        .bind(3, flagsOf(occurrence))
        .bind(4, occurrence.number);
    return m_statements->update.step() == SqliteStatement::Done;
}

bool AlarmHistory::removeOld(std::optional<qint64> confirmed)
{
    // Numbers ascend one by one, so that they tell how many there are, or fewer.
    const std::optional<qint64> newest = m_database.number("SELECT max(number) FROM occurrence");
    const qint64 oldest =
        confirmed ? *confirmed - m_limits.age : std::numeric_limits<qint64>::min();
    m_statements->removeOld.bind(0, oldest).bind(1, newest.value_or(0) - m_limits.occurrences);
    return m_statements->removeOld.step() == SqliteStatement::Done;
}

Expected<QVector<KeptOccurrence>> AlarmHistory::kept()
{
    if (const Expected<void> there = look(); !there)
        return there.error();
    QVector<KeptOccurrence> found;
    SqliteStatement& rows = m_statements->kept;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step())
        found.append({occurrenceOf(rows), int(rows.number(14))});
    if (step == SqliteStatement::Failed)
        return failed();
    return found;
}

Expected<QVector<AlarmOccurrence>> AlarmHistory::between(qint64 from, qint64 to, int most)
{
    if (const Expected<void> there = look(); !there)
        return there.error();
    SqliteStatement& rows = m_statements->between;
    rows.bind(0, to).bind(1, from).bind(2, qint64(most));
    return allOf(&rows);
}

Expected<QVector<AlarmOccurrence>> AlarmHistory::allOf(SqliteStatement* rows) const
{
    QVector<AlarmOccurrence> found;
    SqliteStatement::Step step = rows->step();
    for (; step == SqliteStatement::Row; step = rows->step())
        found.append(occurrenceOf(*rows));
    if (step == SqliteStatement::Failed)
        return failed();
    return found;
}

Expected<qint64> AlarmHistory::nextNumber()
{
    if (const Expected<void> there = look(); !there)
        return there.error();
    return followingNumber();
}

Expected<qint64> AlarmHistory::followingNumber()
{
    const std::optional<qint64> newest = m_database.number(
        "SELECT ifnull(max(seq), 0) FROM sqlite_sequence"
        " WHERE name = 'occurrence'");
    // An empty table has no row yet.
    if (!newest)
        return failed();
    return *newest + 1;
}

} // namespace plc::panel
