#ifndef PLC_RECORDER_COMPACTION_H
#define PLC_RECORDER_COMPACTION_H

#include <QtCore/QHash>

#include "database/sqlite_database.h"
#include "recorder/block_table.h"
#include "recorder/series_portion.h"

namespace plc::recorder {

/// Makes blocks of batches.
class Compaction {
public:
    explicit Compaction(database::SqliteDatabase* database) : m_database(database) {}

    /// Makes blocks of all batches, inside a transaction. Returns false after a failure, behind
    /// which the transaction has to be rolled back.
    bool run();
    /// The transaction was rolled back: the numbers of its blocks are given to others.
    void forget() { m_last.clear(); }

private:
    std::optional<qint64> portionBytes();
    bool take(SeriesPortion* portion);
    bool store(BlockTable* blocks, const SeriesPortion& portion);
    bool store(BlockTable* blocks, const RunAndSeries& key, const QByteArray& batch);
    std::optional<Block> lastBlock(BlockTable* blocks, const RunAndSeries& key) const;
    bool save(BlockTable* blocks, Block* block);
    void keepOnly(qint64 run);

    database::SqliteDatabase* const m_database;
    /// Numbers of the last blocks of the present run: to find them among many takes long.
    QHash<RunAndSeries, qint64> m_last;
};

} // namespace plc::recorder

#endif
