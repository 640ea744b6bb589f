#include "recorder/compaction.h"

#include <iterator>

#include "recorder/sample_block.h"

namespace plc::recorder {

using database::SqliteStatement;

namespace {

/// Parts in which batches become blocks: a program that has little memory need not hold them all.
constexpr qint64 kPortions = 8;

} // namespace

bool Compaction::run()
{
    const std::optional<qint64> most = portionBytes();
    BlockTable blocks(m_database);
    if (!most || !blocks.isPrepared())
        return false;
    SeriesPortion portion(*most);
    while (take(&portion) && store(&blocks, portion)) {
        if (portion.isLast()) {
            if (!portion.changes().isEmpty())
                keepOnly(portion.changes().lastKey().first);
            return m_database->execute("DELETE FROM batch");
        }
        portion.goOn();
    }
    return false;
}

std::optional<qint64> Compaction::portionBytes()
{
    const std::optional<qint64> all =
        m_database->number("SELECT coalesce(sum(length(changes)), 0) FROM batch");
    return all ? std::optional(*all / kPortions) : std::nullopt;
}

/// Runs that are over get no more samples.
void Compaction::keepOnly(qint64 run)
{
    for (auto one = m_last.begin(); one != m_last.end();)
        one = one.key().first == run ? std::next(one) : m_last.erase(one);
}

/// What stands behind damage in a batch cannot be known.
bool Compaction::take(SeriesPortion* portion)
{
    SqliteStatement rows(*m_database, "SELECT run, time, changes FROM batch ORDER BY id");
    if (!rows.isPrepared())
        return false;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        BatchDecoder changes(rows.bytes(2), rows.number(1));
        const qint64 run = rows.number(0);
        while (changes.next()) {
            if (portion->wants({run, changes.series()}))
                portion->append({run, changes.series()}, changes.sample());
        }
    }
    return step == SqliteStatement::Done;
}

bool Compaction::store(BlockTable* blocks, const SeriesPortion& portion)
{
    const SeriesPortion::Changes& changes = portion.changes();
    bool isDone = true;
    for (auto one = changes.constBegin(); one != changes.constEnd() && isDone; ++one)
        isDone = store(blocks, one.key(), one.value().batch());
    return isDone;
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
