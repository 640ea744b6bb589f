#ifndef PLC_RECORDER_HISTORY_H
#define PLC_RECORDER_HISTORY_H

#include <QtCore/QVector>

#include <functional>

#include "database/sqlite_database.h"
#include "recorder/change.h"
#include "recorder/recent_samples.h"
#include "recorder/run.h"
#include "recorder/series.h"

namespace plc::recorder {

/// Takes a sample; false: no more are wanted.
using TakeSample = std::function<bool(const Sample&)>;

/// Walks through the samples of a value in the order in which they were recorded, with gaps
/// where runs begin and end: those from `from` on and before `to`, and the one before them. Others
/// may be among them. `recent` has what the batches have of the series. Returns false after a
/// failure of the database.
bool walkSamples(database::SqliteDatabase* database, const QVector<Run>& runs,
                 const RecentSamples& recent, const SeriesIds& series, qint64 from, qint64 to,
                 const TakeSample& take);

} // namespace plc::recorder

#endif
