#ifndef PLC_RECORDER_CHANGE_WALK_H
#define PLC_RECORDER_CHANGE_WALK_H

#include <QtCore/QMap>
#include <QtCore/QVector>

#include <functional>
#include <optional>

#include "database/sqlite_database.h"
#include "recorder/change.h"
#include "recorder/run.h"

namespace plc::recorder {

/// Walks through the changes of a run from `from` on and before `to`, of all these series: in the
/// order of time, where each series keeps the order in which it was recorded. Ends early, with
/// success, when `visit` returns false, which `isEnough` then tells. Returns false after a failure
/// of the database.
bool walkChanges(database::SqliteDatabase* database, const Run& run, const QVector<int>& series,
                 qint64 from, qint64 to, const std::function<bool(const Change&)>& visit,
                 bool* isEnough);

/// What each of these series that has a sample before `time` in a run held there, by series;
/// nothing after a failure of the database.
std::optional<QMap<int, Sample>> heldBefore(database::SqliteDatabase* database, const Run& run,
                                            const QVector<int>& series, qint64 time);

} // namespace plc::recorder

#endif
