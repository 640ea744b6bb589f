#include "recorder/recorder.h"

#include <QtCore/QHash>

#include <algorithm>

#include "database/confirmed_time.h"
#include "database/sqlite_database.h"
#include "recorder/change_batch.h"
#include "recorder/compaction.h"
#include "recorder/deadband.h"
#include "recorder/given_series.h"
#include "recorder/recording_place.h"
#include "recorder/removal.h"
#include "recorder/run_table.h"

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

/// How often a run without changes tells on the disk that it still goes on.
constexpr qint64 kAliveInterval = 10000; // ms

constexpr qint64 kPageSize = 4096;
/// Bytes of batches at which they become blocks: enough for each series to have some changes.
constexpr qint64 kSmallTail = qint64(256) * 1024;
constexpr qint64 kLargeTail = qint64(8) * 1024 * 1024;
constexpr qint64 kTailOfSeries = 2048;
/// What a row needs besides its bytes.
constexpr qint64 kBatchOverhead = 20;

/// Parts of a limited size that batches may take, and that blocks are cut to.
constexpr qint64 kTailPart = 12;
constexpr double kBlocksPart = 13.0 / 16;
/// How long it is waited after that failed.
constexpr qint64 kRetryInterval = 60000; // ms
/// How often it is looked for what is too old, as a part of the age.
constexpr qint64 kAgePart = 32;

} // namespace

class Recorder::Implementation {
public:
    explicit Implementation(const Limits& limits) : m_limits(limits), m_compaction(&m_database) {}

    Expected<void> open(const QString& path, qint64 now);
    bool isMediumFailing() const { return m_isMediumFailing || m_database.isMediumFailing(); }

    int series(const SeriesDescription& description) { return m_series.find(description); }
    Expected<void> append(const QVector<Change>& changes, qint64 now, std::optional<qint64> steady);
    void giveUp(const QVector<Change>& changes);
    void interrupt();
    Expected<void> end(qint64 now);
    /// A run that cannot end is found interrupted, at the same time.
    void endAtLastTime()
    {
        static_cast<void>(end(m_now));
        if (!m_place.isThere())
            static_cast<void>(m_place.leave(&m_database));
    }

    QString maintenanceError() const { return m_maintenanceError; }
    int changedFiles() const { return m_changedFiles; }
    qint64 recordedChanges() const { return m_recorded; }
    qint64 usedBytes();

private:
    /// Changes as they are to be stored, and what they begin.
    struct Transaction {
        QVector<Change> changes;
        qint64 time = 0;
        QByteArray batch; ///< The changes as they are stored; empty without any.
        std::optional<Run> ended;
        std::optional<Run> begun; ///< Or the present one with an earlier sample.
        bool isNewRun = false;
    };

    Expected<void> check(const QVector<Change>& changes) const;
    Expected<void> openFile(const QString& path, qint64 now);
    Expected<void> checkFile(qint64 now);
    Expected<void> changeFile(qint64 now);
    QVector<Change> outsideDeadbands(const QVector<Change>& changes, bool isNewRun) const;
    Transaction transactionOf(const QVector<Change>& changes, qint64 now);
    void restate(const QVector<Change>& changes, qint64 begin, Transaction* transaction) const;
    Run endedRun(qint64 now) const;
    Run nextRun(qint64 now) const { return {m_lastRun + 1, now, now, now, Ending::Open}; }

    bool store(const Transaction& transaction);
    bool storeNewSeries();
    bool storeBatch(const Transaction& transaction);
    bool storeAlive(qint64 now);
    void stored(const Transaction& transaction, qint64 now);
    template <typename Work>
    Expected<void> inTransaction(Work work);

    void maintain(qint64 now);
    Expected<void> compact();
    Expected<void> removeOld();
    Expected<void> removeLarge();
    Expected<void> remove(const Horizon& horizon);
    qint64 tailLimit() const;
    std::optional<qint64> oldestToKeep() const;
    bool isTooOld() const;
    std::optional<qint64> usedPages();

    const Limits m_limits;
    RecordingPlace m_place;
    bool m_isTakenAway = false; ///< Nothing is recorded until it goes on in another file.
    int m_changedFiles = 0;
    SqliteDatabase m_database;
    Compaction m_compaction;
    GivenSeries m_series;
    int m_storedSeries = 0;       ///< So many of them are on the disk.
    std::optional<Run> m_unended; ///< Of the recorder before; ends when a run begins.
    std::optional<Run> m_run;
    qint64 m_lastRun = 0;          ///< Its number, also of one that has ended.
    std::optional<Ending> m_break; ///< What the run ends with before the next change.
    qint64 m_now = 0;              ///< Of the last success.
    qint64 m_storedNow = 0;        ///< What of that is on the disk.
    QHash<int, Sample> m_latest;   ///< What the series hold in this run.
    qint64 m_tailBytes = 0;
    qint64 m_retryAt = 0; ///< After a failure to put things in order; 0: there was none.
    bool m_isMediumFailing = false;
    Horizon m_horizon;
    database::ConfirmedTime m_clock;
    std::optional<qint64> m_confirmed; ///< Of the last success.
    std::optional<qint64> m_keptFrom;  ///< What is older was removed by its age the last time.
    QString m_maintenanceError;
    qint64 m_recorded = 0;
};

Expected<void> Recorder::Implementation::open(const QString& path, qint64 now)
{
    if (m_limits.size > 0 && m_limits.size < Limits::kSmallest) {
        return Error{QStringLiteral("a recording may be limited to %1 bytes and more, not to %2")
                         .arg(Limits::kSmallest)
                         .arg(m_limits.size)};
    }
    if (Expected<void> opened = openFile(path, now); !opened)
        return opened;
    const Transaction transaction = transactionOf({}, now);
    Expected<void> begun = inTransaction([&] { return store(transaction); });
    if (begun) {
        stored(transaction, now);
        maintain(now);
    }
    return begun;
}

Expected<void> Recorder::Implementation::openFile(const QString& path, qint64 now)
{
    if (Expected<void> opened = m_place.open(path, &m_database, now); !opened)
        return opened;
    const std::optional<QVector<Series>> series = loadSeries(&m_database);
    const std::optional<QVector<Run>> runs = loadRuns(&m_database);
    const std::optional<Horizon> horizon = loadHorizon(&m_database);
    const std::optional<qint64> tail =
        m_database.number("SELECT ifnull(sum(length(changes)), 0) + 20 * count(*) FROM batch");
    if (!series || !runs || !horizon || !tail)
        return Error{m_database.error()};
    m_series.changeFile(*series);
    m_storedSeries = m_series.stored().size();
    m_horizon = *horizon;
    m_tailBytes = *tail;
    m_unended.reset();
    if (!runs->isEmpty() && runs->last().ending == Ending::Open) {
        m_unended = runs->last();
        m_unended->ending = Ending::Interrupted;
    }
    m_lastRun = std::max(runs->isEmpty() ? 0 : runs->last().id, m_horizon.run - 1);
    return {};
}

Expected<void> Recorder::Implementation::append(const QVector<Change>& changes, qint64 now,
                                                std::optional<qint64> steady)
{
    if (Expected<void> isGood = check(changes); !isGood)
        return isGood;
    if (Expected<void> isThere = checkFile(now); !isThere)
        return isThere;
    if (m_run && !m_break && now < m_now)
        m_break = Ending::ClockSetBack;
    const Transaction transaction = transactionOf(changes, now);
    const bool isEmpty = transaction.changes.isEmpty() && !transaction.begun;
    Expected<void> done;
    if (!isEmpty)
        done = inTransaction([&] { return store(transaction); });
    else if (now - m_storedNow >= kAliveInterval)
        done = inTransaction([&] { return storeAlive(now); });
    if (!done)
        return done;
    stored(transaction, now);
    m_confirmed = steady ? m_clock.update(now, *steady) : now;
    maintain(now);
    return {};
}

Expected<void> Recorder::Implementation::check(const QVector<Change>& changes) const
{
    for (const Change& change : changes) {
        if (!m_series.description(change.series))
            return Error{QStringLiteral("no series has the number %1").arg(change.series)};
    }
    return {};
}

/// A file without a name takes all that is written, and nobody will ever read it.
Expected<void> Recorder::Implementation::checkFile(qint64 now)
{
    m_isTakenAway = m_isTakenAway || m_place.isTakenAway(now);
    if (!m_isTakenAway)
        return {};
    if (const Expected<void> changed = changeFile(now); !changed) {
        return Error{QStringLiteral("%1: the recording was moved or removed while it was open, and"
                                    " none can be begun in its place: %2")
                         .arg(m_place.path(), changed.error().text)};
    }
    m_isTakenAway = false;
    ++m_changedFiles;
    return {};
}

/// What the series hold goes along into a run of the next file.
Expected<void> Recorder::Implementation::changeFile(qint64 now)
{
    if (m_run) {
        const Run run = endedRun(m_now);
        static_cast<void>(inTransaction([&] { return saveRun(&m_database, run); }));
        m_run.reset();
        m_break.reset();
    }
    if (Expected<void> left = m_place.leave(&m_database); !left)
        return left;
    m_compaction.forget();
    m_keptFrom.reset();
    m_retryAt = 0;
    Expected<void> opened = openFile(m_place.path(), now);
    if (!opened)
        m_database.close();
    return opened;
}

/// Each is compared with the one recorded before in its run, which may be among them.
QVector<Change> Recorder::Implementation::outsideDeadbands(const QVector<Change>& changes,
                                                           bool isNewRun) const
{
    QVector<Change> outside;
    QHash<int, Sample> recorded;
    for (const Change& change : changes) {
        const SeriesDescription& series = *m_series.description(change.series);
        if (series.deadband > 0) {
            const QHash<int, Sample>& latest =
                isNewRun || recorded.contains(change.series) ? recorded : m_latest;
            const auto last = latest.constFind(change.series);
            if (last != latest.constEnd() && !isOutsideDeadband(series, *last, change.sample))
                continue;
            recorded.insert(change.series, change.sample);
        }
        outside.append(change);
    }
    return outside;
}

Recorder::Implementation::Transaction Recorder::Implementation::transactionOf(
    const QVector<Change>& changes, qint64 now)
{
    Transaction transaction;
    qint64 first = now;
    for (const Change& change : changes)
        first = std::min(first, change.sample.time);
    if (!m_run || m_break) {
        transaction.ended = m_run ? endedRun(m_now) : m_unended;
        transaction.begun = nextRun(now);
        transaction.begun->first = first;
        transaction.isNewRun = true;
        restate(changes, now, &transaction);
    } else if (first < m_run->first) {
        transaction.begun = m_run;
        transaction.begun->first = first;
    }
    transaction.time = transaction.isNewRun ? now : std::max(now, m_run->until);
    transaction.changes += outsideDeadbands(changes, transaction.isNewRun);
    for (const Change& change : changes)
        transaction.time = std::max(transaction.time, change.sample.time);
    transaction.batch = encodeBatch(m_series.asStored(transaction.changes), transaction.time);
    return transaction;
}

/// In a new run all is given again that holds on.
void Recorder::Implementation::restate(const QVector<Change>& changes, qint64 begin,
                                       Transaction* transaction) const
{
    QHash<int, Sample> held = m_latest;
    for (const Change& change : changes)
        held.remove(change.series);
    for (auto one = held.constBegin(); one != held.constEnd(); ++one) {
        if (one->quality != Quality::Gap)
            transaction->changes.append({one.key(), {begin, one->quality, one->bytes}});
    }
    std::sort(transaction->changes.begin(), transaction->changes.end(),
              [](const Change& a, const Change& b) { return a.series < b.series; });
}

Run Recorder::Implementation::endedRun(qint64 now) const
{
    Run run = *m_run;
    run.until = std::max(run.until, now);
    run.ending = m_break.value_or(Ending::Ended);
    return run;
}

bool Recorder::Implementation::store(const Transaction& transaction)
{
    if (transaction.ended && !saveRun(&m_database, *transaction.ended))
        return false;
    if (transaction.begun && !saveRun(&m_database, *transaction.begun))
        return false;
    return storeNewSeries() && (transaction.changes.isEmpty() || storeBatch(transaction));
}

bool Recorder::Implementation::storeNewSeries()
{
    for (int i = m_storedSeries; i < m_series.stored().size(); ++i) {
        if (!insertSeries(&m_database, m_series.stored()[i]))
            return false;
    }
    return true;
}

bool Recorder::Implementation::storeBatch(const Transaction& transaction)
{
    SqliteStatement insert(m_database, "INSERT INTO batch(run, time, changes) VALUES(?, ?, ?)");
    if (!insert.isPrepared())
        return false;
    insert.bind(0, transaction.begun ? transaction.begun->id : m_run->id)
        .bind(1, transaction.time)
        .bind(2, transaction.batch);
    return insert.step() == SqliteStatement::Done;
}

bool Recorder::Implementation::storeAlive(qint64 now)
{
    Run run = *m_run;
    run.until = std::max(run.until, now);
    return saveRun(&m_database, run);
}

/// After a failure all is as it was before.
template <typename Work>
Expected<void> Recorder::Implementation::inTransaction(Work work)
{
    if (m_database.execute("BEGIN IMMEDIATE") && work() && m_database.execute("COMMIT"))
        return {};
    const Error error{m_database.error()};
    m_isMediumFailing = m_database.isMediumFailing();
    // After some errors SQLite has done so itself; then this one fails and changes nothing.
    m_database.execute("ROLLBACK");
    return error;
}

void Recorder::Implementation::stored(const Transaction& transaction, qint64 now)
{
    if (transaction.begun) {
        m_run = transaction.begun;
        m_lastRun = m_run->id;
    }
    if (transaction.isNewRun) {
        m_break.reset();
        m_unended.reset();
    }
    const bool isOnDisk = transaction.begun || !transaction.changes.isEmpty();
    if (isOnDisk) {
        m_storedSeries = m_series.stored().size();
        m_tailBytes += transaction.batch.size() + kBatchOverhead;
    }
    if (isOnDisk || now - m_storedNow >= kAliveInterval)
        m_storedNow = now;
    m_run->until = std::max({m_run->until, now, transaction.time});
    m_now = now;
    for (const Change& change : transaction.changes)
        m_latest.insert(change.series, change.sample);
    m_recorded += transaction.changes.size();
}

void Recorder::Implementation::giveUp(const QVector<Change>& changes)
{
    if (m_run)
        m_break = Ending::ChangesLost;
    for (const Change& change : changes)
        m_latest.insert(change.series, change.sample);
}

void Recorder::Implementation::interrupt()
{
    if (m_run && !m_break)
        m_break = Ending::Interrupted;
}

Expected<void> Recorder::Implementation::end(qint64 now)
{
    if (!m_run)
        return {};
    const Run run = endedRun(m_break || now < m_now ? m_now : now);
    Expected<void> ended = inTransaction([&] { return saveRun(&m_database, run); });
    if (ended) {
        m_run.reset();
        m_break.reset();
        m_latest.clear();
    }
    return ended;
}

qint64 Recorder::Implementation::tailLimit() const
{
    if (m_limits.unsorted > 0)
        return m_limits.unsorted;
    const qint64 wanted = qBound(kSmallTail, m_series.stored().size() * kTailOfSeries, kLargeTail);
    return m_limits.size > 0 ? std::min(wanted, m_limits.size / kTailPart) : wanted;
}

/// Nothing without a limit, and while no time is confirmed.
std::optional<qint64> Recorder::Implementation::oldestToKeep() const
{
    return m_limits.age > 0 && m_confirmed ? std::optional(*m_confirmed - m_limits.age)
                                           : std::nullopt;
}

/// Also where the clock was set back.
bool Recorder::Implementation::isTooOld() const
{
    const std::optional<qint64> oldest = oldestToKeep();
    return oldest && (!m_keptFrom || qAbs(*oldest - *m_keptFrom) > m_limits.age / kAgePart);
}

/// What fails here is tried again, and nothing is lost.
void Recorder::Implementation::maintain(qint64 now)
{
    const bool isOld = isTooOld();
    const bool mustWait = now < m_retryAt && m_retryAt <= now + kRetryInterval;
    if (mustWait || (!isOld && m_tailBytes < tailLimit()))
        return;
    Expected<void> done = compact();
    if (done && isOld)
        done = removeOld();
    if (done)
        done = removeLarge();
    m_maintenanceError = done ? QString() : done.error().text;
    m_retryAt = done ? 0 : now + kRetryInterval;
}

Expected<void> Recorder::Implementation::compact()
{
    // The batches tell until when the run is known to go on.
    Expected<void> done = inTransaction(
        [&] { return m_compaction.run() && (!m_run || saveRun(&m_database, *m_run)); });
    if (done)
        m_tailBytes = 0;
    else
        m_compaction.forget();
    return done;
}

Expected<void> Recorder::Implementation::removeOld()
{
    const std::optional<QVector<Run>> runs = loadRuns(&m_database);
    if (!runs)
        return Error{m_database.error()};
    const qint64 oldest = *oldestToKeep();
    const Horizon horizon = horizonOfTime(*runs, oldest);
    Expected<void> removed = m_horizon < horizon ? remove(horizon) : Expected<void>();
    if (removed)
        m_keptFrom = oldest;
    return removed;
}

Expected<void> Recorder::Implementation::removeLarge()
{
    const qint64 most = qint64(double(m_limits.size) * kBlocksPart) / kPageSize;
    for (;;) {
        const std::optional<qint64> used = usedPages();
        if (!used)
            return Error{m_database.error()};
        if (m_limits.size == 0 || *used <= most)
            break;
        const std::optional<Horizon> horizon =
            horizonOfBytes(&m_database, (*used - most) * kPageSize);
        if (!horizon)
            return Error{m_database.error()};
        // What the series hold is never removed, even where it alone is too large.
        if (!(m_horizon < *horizon))
            break;
        if (Expected<void> removed = remove(*horizon); !removed)
            return removed;
    }
    if (m_limits.size > 0 &&
        m_database.number("PRAGMA page_count").value_or(0) * kPageSize > m_limits.size)
        m_database.execute("PRAGMA incremental_vacuum");
    return {};
}

Expected<void> Recorder::Implementation::remove(const Horizon& horizon)
{
    Expected<void> removed = inTransaction([&] { return removeBefore(&m_database, horizon); });
    if (removed)
        m_horizon = horizon;
    return removed;
}

std::optional<qint64> Recorder::Implementation::usedPages()
{
    const std::optional<qint64> all = m_database.number("PRAGMA page_count");
    const std::optional<qint64> free = m_database.number("PRAGMA freelist_count");
    return all && free ? std::optional(*all - *free) : std::nullopt;
}

qint64 Recorder::Implementation::usedBytes()
{
    return usedPages().value_or(0) * kPageSize;
}

Expected<std::unique_ptr<Recorder>> Recorder::open(const QString& path, const Limits& limits,
                                                   qint64 now, bool* isMediumFailing)
{
    auto implementation = std::make_unique<Implementation>(limits);
    const Expected<void> opened = implementation->open(path, now);
    if (isMediumFailing)
        *isMediumFailing = !opened && implementation->isMediumFailing();
    if (!opened)
        return opened.error();
    return std::unique_ptr<Recorder>(new Recorder(std::move(implementation)));
}

Recorder::Recorder(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation))
{
}

Recorder::~Recorder()
{
    m_implementation->endAtLastTime();
}

int Recorder::series(const SeriesDescription& description)
{
    return m_implementation->series(description);
}

Expected<void> Recorder::append(const QVector<Change>& changes, qint64 now,
                                std::optional<qint64> steady)
{
    return m_implementation->append(changes, now, steady);
}

void Recorder::giveUp(const QVector<Change>& changes)
{
    m_implementation->giveUp(changes);
}

void Recorder::interrupt()
{
    m_implementation->interrupt();
}

Expected<void> Recorder::end(qint64 now)
{
    return m_implementation->end(now);
}

QString Recorder::maintenanceError() const
{
    return m_implementation->maintenanceError();
}

int Recorder::changedFiles() const
{
    return m_implementation->changedFiles();
}

qint64 Recorder::recordedChanges() const
{
    return m_implementation->recordedChanges();
}

qint64 Recorder::usedBytes() const
{
    return m_implementation->usedBytes();
}

} // namespace plc::recorder
