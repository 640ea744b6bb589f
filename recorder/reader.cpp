#include "recorder/reader.h"

#include <QtCore/QMap>

#include <algorithm>
#include <utility>

#include "database/file_identity.h"
#include "recorder/aggregate_timeline.h"
#include "recorder/block_table.h"
#include "recorder/change_batch.h"
#include "recorder/change_walk.h"
#include "recorder/history.h"
#include "recorder/recent_samples.h"
#include "recorder/recording_file.h"
#include "recorder/run_table.h"
#include "recorder/sample_block.h"
#include "recorder/series_table.h"
#include "recorder/timeline.h"

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

NumberSample numberSample(const SeriesNumbers& numbers, const Sample& sample)
{
    switch (sample.quality) {
        case Quality::Stale:
            return {sample.time, 0, 0, Knowledge::Stale};
        case Quality::Bad:
            return {sample.time, 0, 0, Knowledge::Bad};
        case Quality::Gap:
            return {sample.time, 0, 0, Knowledge::Gap};
        case Quality::Good:
            break;
    }
    const std::optional<ExactNumber> number = numbers.exactNumber(sample.bytes);
    const auto [nearest, rest] = number.value_or(ExactNumber());
    return {sample.time, nearest, rest, number ? Knowledge::Number : Knowledge::NoNumber};
}

} // namespace

class Reader::Implementation {
public:
    using VisitChange = std::function<bool(const Change&)>;

    Expected<void> open(const QString& path)
    {
        m_file = database::FileIdentity(path);
        return openToRead(path, &m_database);
    }
    bool isAtItsPath() const { return m_file.isStill(); }
    void interrupt() { m_database.interrupt(); }

    Expected<QVector<Series>> series() { return answer(loadSeries(&m_database)); }
    Expected<QVector<Run>> runs()
    {
        return inSnapshot<QVector<Run>>([this] { return loadRuns(&m_database); });
    }
    Expected<History> changes(const SeriesIds& series, qint64 from, qint64 to, qint64 most,
                              qint64 mostBytes);
    Expected<QVector<Aggregate>> aggregates(const SeriesIds& series, qint64 from, qint64 to,
                                            qint64 step, qint64 mostKept);
    Expected<void> inOneState(const QVector<int>& series, const std::function<void()>& work);
    Expected<QVector<Change>> lastValues();
    Expected<QMap<int, qint64>> lastRuns();
    Expected<void> forEachChange(const TimeRange& range, const VisitChange& visit);
    Expected<qint64> countChanges();

private:
    /// By series, with the run.
    using LastSamples = QMap<int, std::pair<qint64, Sample>>;

    /// All queries of `work` see one state of the file, which may be that of a call around this.
    template <typename T, typename Work>
    Expected<T> inSnapshot(Work work)
    {
        const bool isOutermost = !m_isInSnapshot;
        m_isInSnapshot = !isOutermost || m_database.execute("BEGIN");
        std::optional<T> result;
        if (m_isInSnapshot)
            result = work();
        const Error error{result ? QString() : m_database.error()};
        if (isOutermost) {
            m_database.execute("COMMIT");
            m_isInSnapshot = false;
        }
        if (!result)
            return error;
        return *result;
    }
    /// The same, with what the batches have of the series in m_recent.
    template <typename T, typename Work>
    Expected<T> withRecent(const QVector<int>& series, Work work)
    {
        return inSnapshot<T>([&]() -> std::optional<T> {
            if (m_recent)
                return work();
            m_recent.emplace();
            std::optional<T> result;
            if (m_recent->load(&m_database, series))
                result = work();
            m_recent.reset();
            return result;
        });
    }
    template <typename T>
    Expected<T> answer(const std::optional<T>& result) const
    {
        if (!result)
            return Error{m_database.error()};
        return *result;
    }

    std::optional<SeriesDescription> description(int series);
    bool walk(const SeriesIds& series, qint64 from, qint64 to, const TakeSample& take);
    bool walkRun(const Run& run, const QVector<int>& series, const TimeRange& range,
                 const VisitChange& visit, bool* isEnough);
    std::optional<qint64> addTail(LastSamples* last);
    bool addBlocks(const QVector<Series>& all, LastSamples* last);

    database::FileIdentity m_file;
    SqliteDatabase m_database;
    bool m_isInSnapshot = false;
    std::optional<RecentSamples> m_recent; ///< In a snapshot, of the series that it is about.
};

bool Reader::Implementation::walk(const SeriesIds& series, qint64 from, qint64 to,
                                  const TakeSample& take)
{
    const std::optional<QVector<Run>> runs = loadRuns(&m_database);
    return runs && walkSamples(&m_database, *runs, *m_recent, series, from, to, take);
}

std::optional<SeriesDescription> Reader::Implementation::description(int series)
{
    const std::optional<QVector<Series>> all = loadSeries(&m_database);
    if (!all)
        return {};
    for (const Series& one : *all) {
        if (one.id == series)
            return one.description;
    }
    return SeriesDescription();
}

Expected<History> Reader::Implementation::changes(const SeriesIds& series, qint64 from, qint64 to,
                                                  qint64 most, qint64 mostBytes)
{
    return withRecent<History>(series.ids, [&]() -> std::optional<History> {
        Timeline<Sample> timeline(from, to, {from, Quality::Gap, {}});
        qint64 bytes = 0;
        const auto isTooMuch = [&] {
            return timeline.elements().size() > most || bytes > mostBytes;
        };
        const auto take = [&](const Sample& sample) {
            timeline.add(sample);
            bytes += sample.time >= from && sample.time < to ? sample.bytes.size() : 0;
            return !isTooMuch();
        };
        if (!walk(series, from, to, take))
            return {};
        History history;
        history.before = timeline.before();
        history.samples = timeline.elements();
        history.isCut = isTooMuch();
        return history;
    });
}

Expected<QVector<Aggregate>> Reader::Implementation::aggregates(const SeriesIds& series,
                                                                qint64 from, qint64 to, qint64 step,
                                                                qint64 mostKept)
{
    return withRecent<QVector<Aggregate>>(series.ids, [&]() -> std::optional<QVector<Aggregate>> {
        const std::optional<SeriesDescription> described = description(series.ids.value(0, -1));
        if (!described)
            return {};
        const SeriesNumbers numbers(*described);
        AggregateTimeline timeline(from, to, step, mostKept);
        const auto take = [&](const Sample& sample) {
            timeline.add(numberSample(numbers, sample));
            return true;
        };
        do {
            if (!walk(series, from, to, take))
                return {};
        } while (!timeline.isFinished());
        return timeline.aggregates();
    });
}

Expected<void> Reader::Implementation::inOneState(const QVector<int>& series,
                                                  const std::function<void()>& work)
{
    const Expected<bool> done = withRecent<bool>(series, [&]() -> std::optional<bool> {
        work();
        return true;
    });
    return done ? Expected<void>() : Expected<void>(done.error());
}

/// Samples of batches, the last of each series with its run; and how many there are in all.
std::optional<qint64> Reader::Implementation::addTail(LastSamples* last)
{
    SqliteStatement rows(m_database, "SELECT run, time, changes FROM batch ORDER BY id");
    if (!rows.isPrepared())
        return {};
    qint64 count = 0;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        BatchDecoder decoder(rows.bytes(2), rows.number(1));
        for (; decoder.next(); ++count)
            last->insert(decoder.series(), {rows.number(0), decoder.sample()});
    }
    return step == SqliteStatement::Done ? std::optional(count) : std::nullopt;
}

/// Of the series that have no samples in batches.
bool Reader::Implementation::addBlocks(const QVector<Series>& all, LastSamples* last)
{
    BlockTable blocks(&m_database);
    SqliteStatement newest(m_database, "SELECT ifnull(max(id), 0) FROM block WHERE series = ?");
    if (!blocks.isPrepared() || !newest.isPrepared())
        return false;
    for (const Series& series : all) {
        if (last->contains(series.id))
            continue;
        if (newest.bind(0, qint64(series.id)).step() != SqliteStatement::Row)
            return false;
        const std::optional<Block> block = blocks.load(newest.number(0));
        newest.reset();
        if (!block)
            return false;
        SampleDecoder decoder(block->samples);
        while (decoder.next())
            last->insert(series.id, {block->run, decoder.sample()});
    }
    return true;
}

Expected<QVector<Change>> Reader::Implementation::lastValues()
{
    return inSnapshot<QVector<Change>>([this]() -> std::optional<QVector<Change>> {
        LastSamples last;
        const std::optional<QVector<Run>> runs = loadRuns(&m_database);
        const std::optional<QVector<Series>> all = loadSeries(&m_database);
        if (!runs || !all || !addTail(&last) || !addBlocks(*all, &last))
            return {};
        const Run present = runs->isEmpty() ? Run() : runs->last();
        QVector<Change> result;
        for (auto one = last.constBegin(); one != last.constEnd(); ++one) {
            const bool isOver = one->first != present.id || present.ending != Ending::Open;
            const Sample gap{present.until, Quality::Gap, {}};
            result.append({one.key(), isOver ? gap : one->second});
        }
        return result;
    });
}

Expected<QMap<int, qint64>> Reader::Implementation::lastRuns()
{
    return inSnapshot<QMap<int, qint64>>([this]() -> std::optional<QMap<int, qint64>> {
        LastSamples last;
        const std::optional<QVector<Series>> all = loadSeries(&m_database);
        if (!all || !addTail(&last) || !addBlocks(*all, &last))
            return {};
        QMap<int, qint64> runs;
        for (auto one = last.constBegin(); one != last.constEnd(); ++one)
            runs.insert(one.key(), one->first);
        return runs;
    });
}

/// False after a failure of the database; `isEnough` tells that `visit` returned false.
bool Reader::Implementation::walkRun(const Run& run, const QVector<int>& series,
                                     const TimeRange& range, const VisitChange& visit,
                                     bool* isEnough)
{
    const bool hasEnd =
        run.ending != Ending::Open && run.until >= range.from && run.until < range.to;
    QMap<int, bool> holds;
    if (hasEnd && run.first < range.from) {
        const auto held = heldBefore(&m_database, run, series, range.from);
        if (!held)
            return false;
        for (auto one = held->constBegin(); one != held->constEnd(); ++one)
            holds.insert(one.key(), one->quality != Quality::Gap);
    }
    const auto take = [&](const Change& change) {
        holds.insert(change.series, change.sample.quality != Quality::Gap);
        return visit(change);
    };
    if (!walkChanges(&m_database, run, series, range.from, range.to, take, isEnough))
        return false;
    for (int id : hasEnd ? holds.keys(true) : QList<int>())
        *isEnough = *isEnough || !visit({id, {run.until, Quality::Gap, {}}});
    return true;
}

Expected<void> Reader::Implementation::forEachChange(const TimeRange& range,
                                                     const VisitChange& visit)
{
    const Expected<bool> done = inSnapshot<bool>([&]() -> std::optional<bool> {
        const std::optional<QVector<Run>> runs = loadRuns(&m_database);
        const std::optional<QVector<Series>> all = loadSeries(&m_database);
        if (!runs || !all)
            return {};
        QVector<int> ids;
        for (const Series& series : *all)
            ids.append(series.id);
        bool isEnough = false;
        for (auto run = runs->constBegin(); run != runs->constEnd() && !isEnough; ++run) {
            if (!walkRun(*run, ids, range, visit, &isEnough))
                return {};
        }
        return true;
    });
    return done ? Expected<void>() : Expected<void>(done.error());
}

Expected<qint64> Reader::Implementation::countChanges()
{
    return inSnapshot<qint64>([this]() -> std::optional<qint64> {
        LastSamples last;
        const std::optional<qint64> tail = addTail(&last);
        const std::optional<qint64> blocks =
            m_database.number("SELECT ifnull(sum(count), 0) FROM block");
        if (!blocks || !tail)
            return {};
        return *blocks + *tail;
    });
}

Expected<std::unique_ptr<Reader>> Reader::open(const QString& path)
{
    auto implementation = std::make_unique<Implementation>();
    if (const Expected<void> opened = implementation->open(path); !opened)
        return opened.error();
    return std::unique_ptr<Reader>(new Reader(std::move(implementation)));
}

Reader::Reader(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation))
{
}

Reader::~Reader() = default;

void Reader::interrupt()
{
    m_implementation->interrupt();
}

bool Reader::isAtItsPath() const
{
    return m_implementation->isAtItsPath();
}

Expected<QVector<Series>> Reader::series()
{
    return m_implementation->series();
}

Expected<QVector<Run>> Reader::runs()
{
    return m_implementation->runs();
}

Expected<Sample> Reader::valueAt(int series, qint64 time)
{
    const Expected<History> history = m_implementation->changes(series, time, time + 1, kAll, kAll);
    if (!history)
        return history.error();
    return history->samples.isEmpty() ? history->before : history->samples.last();
}

Expected<QVector<Change>> Reader::lastValues()
{
    return m_implementation->lastValues();
}

Expected<QMap<int, qint64>> Reader::lastRuns()
{
    return m_implementation->lastRuns();
}

Expected<History> Reader::changes(const SeriesIds& series, qint64 from, qint64 to, qint64 most,
                                  qint64 mostBytes)
{
    return m_implementation->changes(series, from, to, most, mostBytes);
}

Expected<QVector<Aggregate>> Reader::aggregates(const SeriesIds& series, qint64 from, qint64 to,
                                                qint64 step, qint64 mostKept)
{
    return m_implementation->aggregates(series, from, to, step, mostKept);
}

Expected<void> Reader::inOneState(const QVector<int>& series, const std::function<void()>& work)
{
    return m_implementation->inOneState(series, work);
}

Expected<void> Reader::forEachChange(const TimeRange& range,
                                     const std::function<bool(const Change&)>& visit)
{
    return m_implementation->forEachChange(range, visit);
}

Expected<qint64> Reader::countChanges()
{
    return m_implementation->countChanges();
}

} // namespace plc::recorder
