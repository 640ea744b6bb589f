#ifndef PLC_RECORDER_RECORDING_FILE_H
#define PLC_RECORDER_RECORDING_FILE_H

#include <QtCore/QString>

#include "database/sqlite_database.h"
#include "values/expected.h"

namespace plc::recorder {

// The tables:
//
//   series   what is recorded; type empty: texts as somebody wrote them
//   run      stretches of recording; until: as far as is known without the batches
//   batch    the latest changes, as they came, one row for each transaction; see change_batch.h.
//            time: when it was told, which ascends in a run
//   block    all before them, series by series; see sample_block.h. In the order of id a series has
//            its samples in the order in which they were recorded. first, last: least and greatest
//            time
//   horizon  where the oldest was removed: what a series held there is the oldest there is
//
// Batches become blocks in one transaction now and then: rows for a few changes each are quickly
// written, blocks are small and quickly read.

/// Opens a file for recording, and makes it where it does not exist.
Expected<void> openToRecord(const QString& path, database::SqliteDatabase* database);

/// Opens a recording that exists, for queries only.
Expected<void> openToRead(const QString& path, database::SqliteDatabase* database);

/// Whether the file exists and is a recording. Not so while another process makes it one.
bool isRecording(const QString& path);

} // namespace plc::recorder

#endif
