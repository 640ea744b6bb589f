#ifndef PLC_RECORDER_BLOCK_TABLE_H
#define PLC_RECORDER_BLOCK_TABLE_H

#include <optional>

#include "database/sqlite_database.h"
#include "recorder/change.h"

namespace plc::recorder {

/// A block that has so many bytes gets no more samples: with what a row needs besides it fills a
/// page of the database.
constexpr int kFullBlock = 3950;

/// Samples of one series, from one run.
struct Block {
    Block() = default;
    Block(int ofSeries, qint64 ofRun) : series(ofSeries), run(ofRun) {}

    /// One more sample.
    void count(const Sample& sample);

    qint64 id = 0; ///< 0: it is not stored.
    int series = 0;
    qint64 run = 0;
    qint64 first = 0; ///< Least time.
    qint64 last = 0;  ///< Greatest time.
    qint64 size = 0;  ///< Number of samples.
    QByteArray samples;
};

/// The blocks of a recording. Nothing and false are returned after a failure of the database.
class BlockTable {
public:
    explicit BlockTable(database::SqliteDatabase* database);

    bool isPrepared() const;
    /// Number of the last block of a series in a run, 0 if there is none.
    std::optional<qint64> lastOf(int series, qint64 run);
    /// Number of the last of those blocks that begins before a time, 0 if there is none.
    std::optional<qint64> lastBefore(int series, qint64 run, qint64 time);
    /// The block of this number; one of number 0 if there is none.
    std::optional<Block> load(qint64 id);
    /// Stores the block, which gets its number if it has none.
    bool save(Block* block);

private:
    bool insert(Block* block);
    bool update(const Block& block);

    database::SqliteDatabase* const m_database;
    database::SqliteStatement m_lastBefore;
    database::SqliteStatement m_load;
    database::SqliteStatement m_insert;
    database::SqliteStatement m_update;
};

} // namespace plc::recorder

#endif
