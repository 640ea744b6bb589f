#ifndef PLC_LOG_LOG_CONVERSION_H
#define PLC_LOG_LOG_CONVERSION_H

#include "log/log_export.h"

namespace plc::log {

/// Makes a recording, a new file which appears when it is complete, of a log in CSV or in a
/// database of version 1.0. Returns the number of records. The series have no type: the log has
/// texts only.
///
/// Such a log does not tell when nothing was logged. But a log of changes gives a value again that
/// has not changed only where it was begun anew; there the recording has a gap from the record
/// before. `every` is the interval of a log that was made at one, in ms, else 0: there a record
/// that comes by half an interval later than it should is behind a gap. `plc` is the name of the
/// PLC that the values are of; empty: none.
Expected<qint64> convertLog(const QString& oldPath, const QString& newPath, qint64 every,
                            const QString& plc, const ExportProgress& progress,
                            bool* isMediumFailing = nullptr);

} // namespace plc::log

#endif
