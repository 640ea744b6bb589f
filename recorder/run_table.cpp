#include "recorder/run_table.h"

#include <algorithm>

namespace plc::recorder {

using database::SqliteDatabase;
using database::SqliteStatement;

namespace {

/// The last batch, if it is one of this run.
bool takeLastBatch(SqliteDatabase* database, Run* run)
{
    SqliteStatement last(*database, "SELECT run, time FROM batch ORDER BY id DESC LIMIT 1");
    if (!last.isPrepared())
        return false;
    const SqliteStatement::Step step = last.step();
    if (step == SqliteStatement::Row && last.number(0) == run->id)
        run->until = std::max(run->until, last.number(1));
    return step != SqliteStatement::Failed;
}

} // namespace

std::optional<QVector<Run>> loadRuns(SqliteDatabase* database)
{
    SqliteStatement rows(*database, "SELECT id, begin, first, until, ending FROM run ORDER BY id");
    if (!rows.isPrepared())
        return {};
    QVector<Run> runs;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step())
        runs.append({rows.number(0), rows.number(1), rows.number(2), rows.number(3),
                     Ending(rows.number(4))});
    if (step == SqliteStatement::Failed)
        return {};
    if (!runs.isEmpty() && !takeLastBatch(database, &runs.last()))
        return {};
    return runs;
}

bool saveRun(SqliteDatabase* database, const Run& run)
{
    SqliteStatement save(*database, "REPLACE INTO run VALUES(?, ?, ?, ?, ?)");
    if (!save.isPrepared())
        return false;
    save.bind(0, run.id)
        .bind(1, run.begin)
        .bind(2, run.first)
        .bind(3, run.until)
        .bind(4, qint64(run.ending));
    return save.step() == SqliteStatement::Done;
}

} // namespace plc::recorder
