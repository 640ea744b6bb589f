#ifndef PLC_GATEWAY_STORE_CHANGE_DATABASE_H
#define PLC_GATEWAY_STORE_CHANGE_DATABASE_H

#include <QtCore/QHash>
#include <QtCore/QPair>

#include <limits>
#include <memory>
#include <optional>

#include "database/sqlite_database.h"
#include "gateway/model/change_store.h"

namespace plc::gateway {

constexpr qint64 kPageSize = 4096;  ///< Bytes.
constexpr qint64 kGrowthPages = 16; ///< Pages by which the file grows.

/// What a store knows beside its changes.
struct StoreState {
    quint64 dropped = 0;
    int session = -1; ///< The last session number taken; -1: none yet.
    qint64 last = 0;  ///< The newest number ever given.
};

/// Bytes on disk, in pages of the database.
struct StoreLimits {
    qint64 databasePages = 0;
    qint64 journalPages = 0;
};

/// A device, and of one of its metrics name and type.
using MetricKey = QPair<QString, QPair<QString, QString>>;

inline MetricKey keyOf(const StoredChange& change)
{
    return {change.device, {change.metric, change.type}};
}

// What a row takes beside its texts and bytes: its cell, its header, two ids, the time.
constexpr qint64 kRowOverhead = 28;

/// The database file of a store:
///
///   device(id, name)
///   metric(id, device, name, type)               device: its id
///   change(number, metric, time, state, bytes)   metric: its id; state: Quality, 4 is isQualityNew
///   state(dropped, session, last)                one row, see StoreState
///
/// Names stand once in it, so that a change takes little more than its time and its bytes. While it
/// is open, no other process can open it. Functions that change it return false on failure; error()
/// and isDamaged() then say why, until the next call.
class ChangeDatabase {
public:
    struct Opening {
        std::unique_ptr<ChangeDatabase> database; ///< Null: `error` tells why.
        QString error;
        bool isDamaged = false;       ///< It is a store, or no database at all, and cannot be read.
        bool isMediumFailing = false; ///< The disk is full, or takes nothing.
        std::optional<StoreState> state;
        std::optional<qint64> count; ///< Of the changes.
    };
    /// Creates the file if it does not exist. A damaged one still gives its state and its count, if
    /// that much can be read.
    static Opening open(const QString& path, const StoreLimits& limits);

    bool begin();
    bool commit();
    void rollback();

    bool insert(qint64 number, const StoredChange& change);
    /// Removes the oldest that take so many bytes, one at least, none behind `last`. Returns how
    /// many they were; nothing on failure.
    std::optional<qint64> removeOldest(qint64 bytes,
                                       qint64 last = std::numeric_limits<qint64>::max());
    /// Returns how many they were; nothing on failure.
    std::optional<qint64> removeRange(qint64 first, qint64 last);
    bool save(const StoreState& state);

    std::optional<QVector<StoredChange>> oldest(qint64 behind, int count);
    std::optional<qint64> countBehind(qint64 number);
    /// Pages that hold something.
    std::optional<qint64> usedPages();
    /// Has the disk give what so many more pages take. The journal would take them also from a full
    /// disk, but could then not be taken in, and nothing be removed any more.
    bool reserve(qint64 pages);
    /// Takes the journal in, so that its place can be used again.
    void takeInJournal() { m_database.execute("PRAGMA wal_checkpoint"); }
    /// Gives the disk back what the file has beyond its limit, as far as it is not used.
    bool shrink(const StoreLimits& limits);
    bool isKnown(const MetricKey& metric) const { return m_names.metricIds.contains(metric); }

    QString error() const;
    bool isMediumFailing() const { return m_isFull || m_database.isMediumFailing(); }
    bool isDamaged() const { return m_database.isDamaged(); }

private:
    struct MetricName {
        QString device;
        QString name;
        QString type;
    };
    struct Names {
        QHash<QString, qint64> deviceIds;
        QHash<MetricKey, qint64> metricIds;
        QHash<qint64, MetricName> metrics;
    };

    ChangeDatabase() = default;
    bool openFile(const QString& path, Opening* opening);
    bool prepareTables(const StoreLimits& limits, Opening* opening);
    bool forgetUnusedNames();
    bool prepareStatements();
    bool loadNames();
    std::optional<StoreState> loadState();
    std::optional<qint64> deviceId(const QString& name);
    std::optional<qint64> metricId(const StoredChange& change);

    database::SqliteDatabase m_database;
    struct Statements;
    struct StatementsDeleter {
        void operator()(Statements* statements) const;
    };
    std::unique_ptr<Statements, StatementsDeleter> m_statements;
    Names m_names;
    Names m_namesBefore; ///< The transaction.
    QString m_path;
    bool m_isFull = false; ///< The disk, as reserve() found in this transaction.
};

} // namespace plc::gateway

#endif
