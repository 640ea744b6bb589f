#include "recorder/recent_samples.h"

#include <QtCore/QSet>

#include "recorder/change_batch.h"

namespace plc::recorder {

using database::SqliteStatement;

bool RecentSamples::load(database::SqliteDatabase* database, const QVector<int>& series)
{
    const QSet<int> wanted(series.begin(), series.end());
    SqliteStatement rows(*database, "SELECT run, time, changes FROM batch ORDER BY id");
    if (!rows.isPrepared())
        return false;
    SqliteStatement::Step step = rows.step();
    for (; step == SqliteStatement::Row; step = rows.step()) {
        BatchDecoder changes(rows.bytes(2), rows.number(1));
        while (changes.next()) {
            if (wanted.contains(changes.series()))
                m_blocks[{changes.series(), rows.number(0)}].append(changes.sample());
        }
    }
    return step == SqliteStatement::Done;
}

} // namespace plc::recorder
