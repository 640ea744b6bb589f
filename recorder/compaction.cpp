#include "recorder/compaction.h"

#include <iterator>

#include "recorder/sample_block.h"

namespace plc::recorder {

using database::SqliteStatement;

bool Compaction::run()
{
    Samples samples;
    // The pages of the batches are free for the blocks.
    if (!takeBatches(&samples) || !m_database->execute("DELETE FROM batch"))
        return false;
    BlockTable blocks(m_database);
    bool isDone = blocks.isPrepared();
    for (auto one = samples.constBegin(); one != samples.constEnd() && isDone; ++one)
        isDone = store(&blocks, one.key(), one.value().batch());
    if (isDone && !samples.isEmpty())
        keepOnly(samples.lastKey().first);
    return isDone;
}

/// Runs that are over get no more samples.
void Compaction::keepOnly(qint64 run)
{
    for (auto one = m_last.begin(); one != m_last.end();)
        one = one.key().first == run ? std::next(one) : m_last.erase(one);
}

/// What stands behind damage in a batch cannot be known.
bool Compaction::takeBatches(Samples* samples)
{
    SqliteStatement rows(*m_database, "SELECT run, time, changes FROM batch ORDER BY id");
    if (!rows.isPrepared())
        return false;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        BatchDecoder changes(rows.bytes(2), rows.number(1));
        while (changes.next())
            (*samples)[{rows.number(0), changes.series()}].append(changes.series(),
                                                                  changes.sample());
    }
    return step == SqliteStatement::Done;
}

/// Fills the last block of the series in this run, and then new ones.
bool Compaction::store(BlockTable* blocks, const RunAndSeries& key, const QByteArray& batch)
{
    std::optional<Block> block = lastBlock(blocks, key);
    if (!block)
        return false;
    SampleEncoder encoder(block->samples);
    BatchDecoder samples(batch, 0);
    while (samples.next()) {
        const Sample sample = samples.sample();
        if (encoder.block().size() >= kFullBlock) {
            block->samples = encoder.block();
            if (!save(blocks, &*block))
                return false;
            block = Block(key.second, key.first);
            encoder = SampleEncoder();
        }
        block->count(sample);
        encoder.append(sample);
    }
    block->samples = encoder.block();
    return save(blocks, &*block);
}

std::optional<Block> Compaction::lastBlock(BlockTable* blocks, const RunAndSeries& key) const
{
    const auto known = m_last.constFind(key);
    const std::optional<qint64> id =
        known != m_last.constEnd() ? std::optional(*known) : blocks->lastOf(key.second, key.first);
    if (!id)
        return {};
    const std::optional<Block> block = blocks->load(*id);
    if (!block)
        return {};
    const bool isOfKey = block->run == key.first && block->series == key.second;
    return isOfKey && block->samples.size() < kFullBlock ? *block : Block(key.second, key.first);
}

bool Compaction::save(BlockTable* blocks, Block* block)
{
    if (!blocks->save(block))
        return false;
    m_last.insert({block->run, block->series}, block->id);
    return true;
}

} // namespace plc::recorder
