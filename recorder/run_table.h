#ifndef PLC_RECORDER_RUN_TABLE_H
#define PLC_RECORDER_RUN_TABLE_H

#include <QtCore/QVector>

#include <optional>

#include "database/sqlite_database.h"
#include "recorder/run.h"

namespace plc::recorder {

/// All runs of a recording in the order in which they were recorded; the last one, which may be
/// open, up to the last batch. Nothing when they cannot be read.
std::optional<QVector<Run>> loadRuns(database::SqliteDatabase* database);

/// Replaces what is known of the run of that number, or adds it.
bool saveRun(database::SqliteDatabase* database, const Run& run);

} // namespace plc::recorder

#endif
