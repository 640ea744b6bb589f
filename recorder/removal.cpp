#include "recorder/removal.h"

#include <algorithm>
#include <limits>

#include "recorder/block_table.h"
#include "recorder/sample_block.h"
#include "recorder/series_table.h"

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

/// What a row needs besides its samples, with its places in the indices.
constexpr qint64 kBlockOverhead = 60;

bool execute(SqliteDatabase* database, const char* text, std::initializer_list<qint64> parameters)
{
    SqliteStatement statement(*database, text);
    if (!statement.isPrepared())
        return false;
    int index = 0;
    for (qint64 parameter : parameters)
        statement.bind(index++, parameter);
    return statement.step() == SqliteStatement::Done;
}

/// The samples from the last one on that was recorded of a time before this one.
Block cutAt(const Block& block, qint64 time)
{
    QVector<Sample> samples;
    SampleDecoder decoder(block.samples);
    while (decoder.next()) {
        if (decoder.sample().time < time)
            samples.clear();
        samples.append(decoder.sample());
    }
    Block cut(block.series, block.run);
    cut.id = block.id;
    SampleEncoder encoder;
    for (const Sample& sample : samples) {
        cut.count(sample);
        encoder.append(sample);
    }
    cut.samples = encoder.block();
    return cut;
}

bool removeOfSeries(SqliteDatabase* database, BlockTable* blocks, int series,
                    const Horizon& horizon)
{
    if (!execute(database, "DELETE FROM block WHERE series = ? AND run < ?", {series, horizon.run}))
        return false;
    const std::optional<qint64> id = blocks->lastBefore(series, horizon.run, horizon.time);
    if (!id || *id == 0)
        return id.has_value();
    if (!execute(database,
                 "DELETE FROM block WHERE series = ? AND run = ? AND first < ? AND id < ?",
                 {series, horizon.run, horizon.time, *id}))
        return false;
    const std::optional<Block> block = blocks->load(*id);
    if (!block)
        return false;
    Block cut = cutAt(*block, horizon.time);
    return cut.size == block->size || cut.size == 0 || blocks->save(&cut);
}

} // namespace

std::optional<Horizon> loadHorizon(SqliteDatabase* database)
{
    SqliteStatement row(*database, "SELECT run, time FROM horizon");
    if (!row.isPrepared() || row.step() != SqliteStatement::Row)
        return {};
    return Horizon{row.number(0), row.number(1)};
}

std::optional<Horizon> horizonOfBytes(SqliteDatabase* database, qint64 bytes)
{
    SqliteStatement rows(*database,
                         "SELECT run, last, length(samples) FROM block ORDER BY run, last");
    if (!rows.isPrepared())
        return {};
    Horizon horizon;
    SqliteStatement::Step step = rows.step();
    for (qint64 sum = 0; step == SqliteStatement::Row && sum < bytes; step = rows.step()) {
        horizon = {rows.number(0), rows.number(1) + 1};
        sum += rows.number(2) + kBlockOverhead;
    }
    return step == SqliteStatement::Failed ? std::nullopt : std::optional(horizon);
}

Horizon horizonOfTime(const QVector<Run>& runs, qint64 time)
{
    // What was recorded before the clock went back ends where the later record begins.
    qint64 end = std::numeric_limits<qint64>::max();
    for (int i = int(runs.size()) - 1; i >= 0; --i) {
        if (std::min(end, runs[i].until) < time)
            return {runs[i].id + 1, time};
        end = std::min(end, runs[i].begin);
    }
    return {runs.isEmpty() ? 0 : runs.first().id, time};
}

bool removeBefore(SqliteDatabase* database, const Horizon& horizon)
{
    const std::optional<QVector<Series>> all = loadSeries(database);
    BlockTable blocks(database);
    if (!all || !blocks.isPrepared())
        return false;
    for (const Series& series : *all) {
        if (!removeOfSeries(database, &blocks, series.id, horizon))
            return false;
    }
    return execute(database, "DELETE FROM run WHERE id < ?", {horizon.run}) &&
           execute(database, "UPDATE horizon SET run = ?, time = ?", {horizon.run, horizon.time});
}

} // namespace plc::recorder
