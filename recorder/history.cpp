#include "recorder/history.h"

#include <algorithm>
#include <limits>

#include "recorder/block_table.h"
#include "recorder/sample_block.h"

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

/// A run, and where it ends for readers: where times were recorded again.
struct Window {
    Run run;
    qint64 end = 0;
};

/// The runs that may tell something of these times, in the order in which they were recorded.
QVector<Window> windowsOf(const QVector<Run>& runs, qint64 from, qint64 to)
{
    QVector<Window> windows;
    qint64 end = std::numeric_limits<qint64>::max();
    for (int i = int(runs.size()) - 1; i >= 0; --i) {
        const Run& run = runs[i];
        if (run.first < to && std::min(run.until, end) >= from)
            windows.prepend({run, std::min(to - 1, end) + 1});
        end = std::min(end, run.begin);
    }
    return windows;
}

class Walk {
public:
    Walk(SqliteDatabase* database, const RecentSamples& recent, const SeriesIds& series,
         qint64 from, const TakeSample& take)
        : m_recent(recent),
          m_series(series.ids),
          m_from(from),
          m_take(take),
          m_table(database),
          m_blocks(*database,
                   "SELECT samples FROM block WHERE series = ? AND run = ? AND first >= ?"
                   " AND first < ? AND id > ? ORDER BY id")
    {
    }

    bool isPrepared() const { return m_table.isPrepared() && m_blocks.isPrepared(); }
    bool walk(const Window& window);
    bool isEnough() const { return m_isEnough; }

private:
    bool give(const Sample& sample)
    {
        // Of these times there is a later record, or nothing is asked.
        if (sample.time < m_end)
            m_isEnough = !m_take(sample);
        return !m_isEnough;
    }
    void giveBlock(const QByteArray& samples);
    bool walkBlocks(int series, const Window& window);

    const RecentSamples& m_recent;
    const QVector<int> m_series;
    const qint64 m_from;
    const TakeSample& m_take;
    BlockTable m_table;
    SqliteStatement m_blocks;
    qint64 m_end = 0; ///< Of the window.
    bool m_isEnough = false;
};

bool Walk::walk(const Window& window)
{
    m_end = window.end;
    if (!give({window.run.begin, Quality::Gap, {}}))
        return true;
    for (auto series = m_series.begin(); series != m_series.end() && !m_isEnough; ++series) {
        if (!walkBlocks(*series, window))
            return false;
        if (!m_isEnough)
            giveBlock(m_recent.block(*series, window.run.id));
    }
    if (!m_isEnough)
        give({window.run.until, Quality::Gap, {}});
    return true;
}

void Walk::giveBlock(const QByteArray& samples)
{
    SampleDecoder decoder(samples);
    while (decoder.next() && give(decoder.sample())) {
    }
}

bool Walk::walkBlocks(int series, const Window& window)
{
    // All behind the last block that begins before a time begin later.
    const std::optional<qint64> id = m_table.lastBefore(series, window.run.id, m_from);
    const std::optional<Block> block = id ? m_table.load(*id) : std::nullopt;
    if (!block)
        return false;
    giveBlock(block->samples);
    m_blocks.bind(0, qint64(series))
        .bind(1, window.run.id)
        .bind(2, m_from)
        .bind(3, window.end)
        .bind(4, *id);
    SqliteStatement::Step step = SqliteStatement::Row;
    while (!m_isEnough && (step = m_blocks.step()) == SqliteStatement::Row)
        giveBlock(m_blocks.bytes(0));
    m_blocks.reset();
    return step != SqliteStatement::Failed;
}

} // namespace

bool walkSamples(SqliteDatabase* database, const QVector<Run>& runs, const RecentSamples& recent,
                 const SeriesIds& series, qint64 from, qint64 to, const TakeSample& take)
{
    Walk walk(database, recent, series, from, take);
    if (!walk.isPrepared())
        return false;
    for (const Window& window : windowsOf(runs, from, to)) {
        if (!walk.walk(window))
            return false;
        if (walk.isEnough())
            break;
    }
    return true;
}

} // namespace plc::recorder
