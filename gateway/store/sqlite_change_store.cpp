#include "gateway/store/sqlite_change_store.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace plc::gateway {
namespace {

constexpr qint64 kJournalShare = 8; ///< Of the limit one in so many bytes is for the journal.
constexpr qint64 kFewestJournalPages = 16;
constexpr qint64 kMostJournalPages = 1024;

/// What of a page rows fill when they are appended one after the other.
constexpr qint64 kFilledOfPage = kPageSize * 9 / 10;
/// Pages that lead to others.
constexpr qint64 kSparePages = 4;

// Rows that are long against a page leave the rest of it empty: half of it at worst.
constexpr qint64 kLongRow = 400;

// Pages whose changes are removed pass through the journal, as do those that are appended. It is
// taken in when it is half full; the rest is for these and for pages that lead to others.
constexpr qint64 kBlockShare = 4; ///< Of the journal one in so many pages is for removing.

constexpr int kSessionNumbers = 256;

constexpr qint64 kSlowDisk = 2000000;   // bytes in a second
constexpr qint64 kPassesOfOpening = 4;  // check, copy, journal, and that taken in
constexpr qint64 kShortestOpening = 60; // s

StoreLimits storeLimits(qint64 bytes)
{
    const qint64 pages = std::max(bytes, SqliteChangeStore::kSmallestLimit) / kPageSize;
    StoreLimits limits;
    limits.journalPages = std::clamp(pages / kJournalShare, kFewestJournalPages, kMostJournalPages);
    limits.databasePages = (pages - limits.journalPages) / kGrowthPages * kGrowthPages;
    return limits;
}

/// How much of a database changes take at most.
class Room {
public:
    explicit Room(const ChangeDatabase& database) : m_database(database) {}

    void add(const StoredChange& change)
    {
        const qint64 row = kRowOverhead + change.bytes.size();
        m_bytes += row > kLongRow ? 2 * row : row;
        const MetricKey key = keyOf(change);
        if (m_database.isKnown(key) || m_newNames.contains(key))
            return;
        m_newNames.insert(key);
        // A name of Latin letters has one byte for each, one of Chinese signs three.
        m_bytes += 2 * kRowOverhead +
                   qint64(3) * (change.device.size() + change.metric.size() + change.type.size());
    }
    qint64 pages() const { return m_bytes / kFilledOfPage + kSparePages; }

private:
    const ChangeDatabase& m_database;
    QSet<MetricKey> m_newNames;
    qint64 m_bytes = 0;
};

/// A name beside `path` that no file has.
QString nameForDamaged(const QString& path)
{
    const QString time =
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'"));
    const QString name = QStringLiteral("%1.damaged-%2").arg(path, time);
    QString free = name;
    for (int i = 2; QFile::exists(free); ++i)
        free = QStringLiteral("%1-%2").arg(name).arg(i);
    return free;
}

} // namespace

SqliteChangeStore::SqliteChangeStore(const QString& path, qint64 sizeLimit)
    : m_path(path), m_limits(storeLimits(sizeLimit))
{
}

Expected<std::unique_ptr<SqliteChangeStore>> SqliteChangeStore::open(const QString& path,
                                                                     qint64 sizeLimit)
{
    std::unique_ptr<SqliteChangeStore> store(new SqliteChangeStore(path, sizeLimit));
    const Expected<void> opened = store->openDatabase();
    if (!opened && !store->m_isMediumFailing)
        return opened.error();
    if (!opened)
        store->m_notice =
            QStringLiteral("%1; until there is room no change is stored").arg(opened.error().text);
    return store;
}

qint64 SqliteChangeStore::longestOpening(const QString& path)
{
    const qint64 bytes = QFileInfo(path).size() + QFileInfo(path + QStringLiteral("-wal")).size();
    return kShortestOpening + kPassesOfOpening * bytes / kSlowDisk;
}

void SqliteChangeStore::tryAgain()
{
    if (m_database)
        return;
    if (openDatabase() && m_notice.isEmpty())
        m_notice = QStringLiteral("%1: the store is open now").arg(m_path);
}

ChangeDatabase::Opening SqliteChangeStore::openFile()
{
    ChangeDatabase::Opening opening = ChangeDatabase::open(m_path, m_limits);
    // What this process knows counts more than what the file, perhaps a new one, has.
    if (opening.state && !m_isStateKnown) {
        const StoreState before = m_books.state;
        m_books.state = *opening.state;
        m_books.state.dropped += before.dropped;
        if (before.session >= 0)
            m_books.state.session = before.session;
        m_isStateKnown = true;
    }
    m_isMediumFailing = opening.isMediumFailing;
    return opening;
}

Expected<void> SqliteChangeStore::openDatabase()
{
    Expected<void> opened = openAndFit();
    m_problem = opened ? QString() : opened.error().text;
    return opened;
}

Expected<void> SqliteChangeStore::openAndFit()
{
    ChangeDatabase::Opening opening = openFile();
    if (opening.isDamaged) {
        const Expected<void> renamed = setAside(opening.error, opening.count);
        if (!renamed)
            return renamed.error();
        opening = openFile();
    }
    if (!opening.database)
        return Error{opening.error};
    m_database = std::move(opening.database);
    m_books.count = *opening.count;
    const Expected<void> fitted = transact(
        [this](Books* books) { return makeRoom(0, books) && m_database->save(books->state); });
    if (!m_database)
        return fitted.error();
    // A disk that takes nothing is no reason not to send what is there.
    if (fitted)
        m_database->shrink(m_limits);
    return {};
}

/// Keeps the file under another name, for those who want to know what happened or to save what is
/// in it. `changes`: how many it has, if that is known.
Expected<void> SqliteChangeStore::setAside(const QString& reason, std::optional<qint64> changes)
{
    m_database.reset();
    m_books.state.dropped += quint64(changes.value_or(0));
    m_books.count = 0;
    m_consumedRows = 0;
    const QString name = nameForDamaged(m_path);
    if (!QFile::rename(m_path, name))
        return Error{QStringLiteral("%1: the store is damaged (%2) and cannot be renamed")
                         .arg(m_path, reason)};
    QFile::rename(m_path + QStringLiteral("-wal"), name + QStringLiteral("-wal"));
    const QString lost = changes ? QStringLiteral("%1 changes").arg(*changes)
                                 : QStringLiteral("an unknown number of changes");
    m_notice = QStringLiteral(
                   "%1: the store was damaged (%2); it is kept as %3 with %4, and a new "
                   "one is begun")
                   .arg(m_path, reason, name, lost);
    return {};
}

/// Call after a call of the database failed. Tells why; sets a damaged one aside.
Error SqliteChangeStore::failed()
{
    Error error{m_database->error()};
    const bool isDamaged = m_database->isDamaged();
    m_database->rollback();
    if (isDamaged) {
        const Expected<void> renamed = setAside(error.text, m_books.count - m_consumedRows);
        if (!renamed)
            return renamed.error();
    }
    return error;
}

template <typename Work>
Expected<void> SqliteChangeStore::transact(Work work)
{
    if (!m_database) {
        const Expected<void> opened = openDatabase();
        if (!opened)
            return opened.error();
    }
    if (attempt(work))
        return {};
    if (m_database->isMediumFailing()) {
        // The place of what is in the journal may do.
        m_database->rollback();
        m_database->takeInJournal();
        if (attempt(work))
            return {};
    }
    return failed();
}

/// Leaves the transaction open where it fails.
template <typename Work>
bool SqliteChangeStore::attempt(Work work)
{
    Books books = m_books;
    if (!m_database->begin() || !work(&books) || !m_database->commit())
        return false;
    m_books = books;
    m_toldFailure.clear();
    return true;
}

/// Removes what is at the broker, a part at a time, each of which needs little of the journal.
Expected<void> SqliteChangeStore::removeConsumed()
{
    bool hasMore = true;
    while (hasMore) {
        const Expected<void> removed = transact([&](Books* books) {
            const std::optional<qint64> rows = m_database->removeOldest(blockBytes(), m_consumed);
            books->count -= rows.value_or(0);
            hasMore = rows && *rows > 0;
            return rows.has_value();
        });
        if (!removed)
            return removed.error();
    }
    m_consumedRows = 0;
    return {};
}

Expected<void> SqliteChangeStore::append(const QVector<StoredChange>& changes)
{
    if (changes.isEmpty())
        return {};
    // The oldest that make room are to be such that are not at the broker.
    if (m_consumedRows > 0) {
        const Expected<void> removed = removeConsumed();
        if (!removed)
            return removed.error();
    }
    return transact([&](Books* books) {
        Room room(*m_database);
        for (const StoredChange& change : changes)
            room.add(change);
        const qint64 pages = std::min(room.pages(), m_limits.databasePages);
        return makeRoom(room.pages(), books) && m_database->reserve(pages) &&
               insert(changes, books) && m_database->save(books->state);
    });
}

qint64 SqliteChangeStore::blockBytes() const
{
    return m_limits.journalPages / kBlockShare * kPageSize;
}

/// Removes the oldest until so many pages are free, or nothing is left.
bool SqliteChangeStore::makeRoom(qint64 pages, Books* books)
{
    std::optional<qint64> used = m_database->usedPages();
    while (used && *used + pages > m_limits.databasePages && books->count > 0) {
        const std::optional<qint64> removed = m_database->removeOldest(blockBytes());
        if (!removed)
            return false;
        books->state.dropped += quint64(*removed);
        books->count -= *removed;
        used = m_database->usedPages();
    }
    return used.has_value();
}

/// Of more changes than the whole store has room for, the last ones are kept.
int SqliteChangeStore::firstThatFits(const QVector<StoredChange>& changes, qint64 pages) const
{
    Room room(*m_database);
    int first = int(changes.size());
    while (first > 0) {
        room.add(changes[first - 1]);
        if (room.pages() > pages)
            break;
        --first;
    }
    return first;
}

bool SqliteChangeStore::insert(const QVector<StoredChange>& changes, Books* books)
{
    const std::optional<qint64> used = m_database->usedPages();
    if (!used)
        return false;
    const int first = firstThatFits(changes, m_limits.databasePages - *used);
    for (int i = first; i < int(changes.size()); ++i) {
        if (!m_database->insert(books->state.last + 1 + i, changes[i]))
            return false;
    }
    books->state.last += changes.size();
    books->state.dropped += quint64(first);
    books->count += changes.size() - first;
    return true;
}

QVector<StoredChange> SqliteChangeStore::oldest(qint64 behind, int count)
{
    if (!m_database)
        return {};
    const std::optional<QVector<StoredChange>> changes =
        m_database->oldest(std::max(behind, m_consumed), count);
    if (changes)
        return *changes;
    tellOnce(failed().text);
    return {};
}

void SqliteChangeStore::removeUpTo(qint64 number)
{
    if (number <= m_consumed)
        return;
    m_consumed = number;
    const Expected<void> removed = removeConsumed();
    if (removed)
        return;
    tellOnce(removed.error().text);
    // What the disk does not let go of is removed with the next change.
    if (m_database)
        m_consumedRows = m_books.count - m_database->countBehind(number).value_or(m_books.count);
}

void SqliteChangeStore::removeRange(qint64 first, qint64 last)
{
    // What is consumed is counted already.
    first = std::max(first, m_consumed + 1);
    if (first > last)
        return;
    const Expected<void> removed = transact([&](Books* books) {
        const std::optional<qint64> rows = m_database->removeRange(first, last);
        books->count -= rows.value_or(0);
        return rows.has_value();
    });
    // What the disk does not let go of is sent once more.
    if (!removed)
        tellOnce(removed.error().text);
}

void SqliteChangeStore::countDropped(quint64 changes)
{
    m_books.state.dropped += changes;
    // On a disk that takes nothing, the number waits for the next change that is stored.
    (void)transact([this](Books* books) { return m_database->save(books->state); });
}

int SqliteChangeStore::takeSessionNumber()
{
    m_books.state.session = (m_books.state.session + 1) % kSessionNumbers;
    (void)transact([this](Books* books) { return m_database->save(books->state); });
    return m_books.state.session;
}

/// A disk that fails does so each time.
void SqliteChangeStore::tellOnce(const QString& failure)
{
    if (failure == m_toldFailure)
        return;
    m_toldFailure = failure;
    if (m_notice.isEmpty())
        m_notice = failure;
}

QString SqliteChangeStore::takeNotice()
{
    return std::exchange(m_notice, QString());
}

} // namespace plc::gateway
