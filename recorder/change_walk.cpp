#include "recorder/change_walk.h"

#include <QtCore/QHash>

#include <memory>
#include <queue>
#include <vector>

#include "recorder/block_table.h"
#include "recorder/change_batch.h"
#include "recorder/sample_block.h"

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

using SamplesBySeries = QHash<int, QVector<Sample>>;

struct Range {
    qint64 from;
    qint64 to;
    bool has(qint64 time) const { return time >= from && time < to; }
};

/// The samples of one series in one run: a block at a time, and then those of the batches.
class Cursor {
public:
    Cursor(int series, const QVector<qint64>& blocks, const QVector<Sample>& tail,
           const Range& range)
        : m_series(series), m_blocks(blocks), m_tail(tail), m_range(range)
    {
    }

    /// Goes on to the next sample of the range; false behind the last one or after a failure.
    bool next(BlockTable* table)
    {
        while (take(table)) {
            if (m_range.has(m_change.sample.time))
                return true;
        }
        return false;
    }
    const Change& change() const { return m_change; }
    bool hasFailed() const { return m_hasFailed; }

private:
    bool take(BlockTable* table)
    {
        while (!m_decoder || !m_decoder->next()) {
            if (m_block == m_blocks.size())
                return takeOfTail();
            const std::optional<Block> block = table->load(m_blocks[m_block++]);
            if (!block) {
                m_hasFailed = true;
                return false;
            }
            m_decoder = std::make_unique<SampleDecoder>(block->samples);
        }
        m_change = {m_series, m_decoder->sample()};
        return true;
    }
    bool takeOfTail()
    {
        m_decoder.reset();
        if (m_tailSample == m_tail.size())
            return false;
        m_change = {m_series, m_tail[m_tailSample++]};
        return true;
    }

    const int m_series;
    const QVector<qint64> m_blocks;
    const QVector<Sample> m_tail;
    const Range m_range;
    int m_block = 0;      ///< The next.
    int m_tailSample = 0; ///< The next.
    std::unique_ptr<SampleDecoder> m_decoder;
    Change m_change;
    bool m_hasFailed = false;
};

bool comesLater(const Cursor* a, const Cursor* b)
{
    const Change& first = a->change();
    const Change& second = b->change();
    return first.sample.time != second.sample.time ? first.sample.time > second.sample.time
                                                   : first.series > second.series;
}

bool loadTail(SqliteDatabase* database, const Run& run, SamplesBySeries* samples)
{
    SqliteStatement rows(*database, "SELECT time, changes FROM batch WHERE run = ? ORDER BY id");
    if (!rows.isPrepared())
        return false;
    rows.bind(0, run.id);
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        BatchDecoder changes(rows.bytes(1), rows.number(0));
        while (changes.next())
            (*samples)[changes.series()].append(changes.sample());
    }
    return step == SqliteStatement::Done;
}

std::optional<QVector<qint64>> blocksOf(SqliteStatement* rows, int series, const Run& run,
                                        const Range& range)
{
    QVector<qint64> blocks;
    rows->bind(0, qint64(series)).bind(1, run.id).bind(2, range.from).bind(3, range.to);
    SqliteStatement::Step step = rows->step();
    for (; step == SqliteStatement::Row; step = rows->step())
        blocks.append(rows->number(0));
    return step == SqliteStatement::Done ? std::optional(blocks) : std::nullopt;
}

} // namespace

bool walkChanges(SqliteDatabase* database, const Run& run, const QVector<int>& series, qint64 from,
                 qint64 to, const std::function<bool(const Change&)>& visit, bool* isEnough)
{
    const Range range{from, to};
    SamplesBySeries tail;
    BlockTable table(database);
    SqliteStatement rows(*database,
                         "SELECT id FROM block WHERE series = ? AND run = ? AND last >= ?"
                         " AND first < ? ORDER BY id");
    if (!table.isPrepared() || !rows.isPrepared() || !loadTail(database, run, &tail))
        return false;
    std::vector<std::unique_ptr<Cursor>> cursors;
    std::priority_queue<Cursor*, std::vector<Cursor*>, decltype(&comesLater)> next(&comesLater);
    const auto goOn = [&](Cursor* cursor) {
        if (cursor->next(&table))
            next.push(cursor);
        return !cursor->hasFailed();
    };
    for (int one : series) {
        const std::optional<QVector<qint64>> blocks = blocksOf(&rows, one, run, range);
        if (!blocks)
            return false;
        cursors.push_back(std::make_unique<Cursor>(one, *blocks, tail.take(one), range));
        if (!goOn(cursors.back().get()))
            return false;
    }
    while (!next.empty()) {
        Cursor* const cursor = next.top();
        next.pop();
        *isEnough = !visit(cursor->change());
        if (*isEnough)
            return true;
        if (!goOn(cursor))
            return false;
    }
    return true;
}

std::optional<QMap<int, Sample>> heldBefore(SqliteDatabase* database, const Run& run,
                                            const QVector<int>& series, qint64 time)
{
    SamplesBySeries tail;
    BlockTable table(database);
    if (!table.isPrepared() || !loadTail(database, run, &tail))
        return {};
    QMap<int, Sample> held;
    for (int one : series) {
        const auto take = [&](const Sample& sample) {
            if (sample.time < time)
                held.insert(one, sample);
        };
        const std::optional<qint64> id = table.lastBefore(one, run.id, time);
        const std::optional<Block> block = id ? table.load(*id) : std::nullopt;
        if (!block)
            return {};
        SampleDecoder decoder(block->samples);
        while (decoder.next())
            take(decoder.sample());
        for (const Sample& sample : tail.value(one))
            take(sample);
    }
    return held;
}

} // namespace plc::recorder
