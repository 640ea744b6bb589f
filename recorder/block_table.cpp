#include "recorder/block_table.h"

#include <algorithm>
#include <limits>

namespace plc::recorder {

using database::SqliteStatement;

void Block::count(const Sample& sample)
{
    first = size == 0 ? sample.time : std::min(first, sample.time);
    last = size == 0 ? sample.time : std::max(last, sample.time);
    ++size;
}

BlockTable::BlockTable(database::SqliteDatabase* database)
    : m_database(database),
      m_lastBefore(*database,
                   "SELECT ifnull(max(id), 0) FROM block"
                   " WHERE series = ? AND run = ? AND first < ?"),
      m_load(*database,
             "SELECT id, series, run, first, last, count, samples FROM block WHERE id = ?"),
      m_insert(*database,
               "INSERT INTO block(series, run, first, last, count, samples)"
               " VALUES(?, ?, ?, ?, ?, ?)"),
      m_update(*database,
               "UPDATE block SET first = ?, last = ?, count = ?, samples = ? WHERE id = ?")
{
}

bool BlockTable::isPrepared() const
{
    return m_lastBefore.isPrepared() && m_load.isPrepared() && m_insert.isPrepared() &&
           m_update.isPrepared();
}

std::optional<qint64> BlockTable::lastOf(int series, qint64 run)
{
    return lastBefore(series, run, std::numeric_limits<qint64>::max());
}

std::optional<qint64> BlockTable::lastBefore(int series, qint64 run, qint64 time)
{
    m_lastBefore.bind(0, qint64(series)).bind(1, run).bind(2, time);
    if (m_lastBefore.step() != SqliteStatement::Row)
        return {};
    const qint64 id = m_lastBefore.number(0);
    m_lastBefore.reset();
    return id;
}

std::optional<Block> BlockTable::load(qint64 id)
{
    Block block;
    m_load.bind(0, id);
    const SqliteStatement::Step step = m_load.step();
    if (step == SqliteStatement::Failed)
        return {};
    if (step == SqliteStatement::Done)
        return block;
    block.id = m_load.number(0);
    block.series = int(m_load.number(1));
    block.run = m_load.number(2);
    block.first = m_load.number(3);
    block.last = m_load.number(4);
    block.size = m_load.number(5);
    block.samples = m_load.bytes(6);
    m_load.reset();
    return block;
}

bool BlockTable::save(Block* block)
{
    return block->id == 0 ? insert(block) : update(*block);
}

bool BlockTable::insert(Block* block)
{
    m_insert.bind(0, qint64(block->series))
        .bind(1, block->run)
        .bind(2, block->first)
        .bind(3, block->last)
        .bind(4, block->size)
        .bind(5, block->samples);
    if (m_insert.step() != SqliteStatement::Done)
        return false;
    block->id = m_database->insertedRow();
    return true;
}

bool BlockTable::update(const Block& block)
{
    m_update.bind(0, block.first)
        .bind(1, block.last)
        .bind(2, block.size)
        .bind(3, block.samples)
        .bind(4, block.id);
    return m_update.step() == SqliteStatement::Done;
}

} // namespace plc::recorder
