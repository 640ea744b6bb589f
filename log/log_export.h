#ifndef PLC_LOG_LOG_EXPORT_H
#define PLC_LOG_LOG_EXPORT_H

#include <QtCore/QString>

#include <functional>

#include "recorder/reader.h"
#include "values/expected.h"

namespace plc::log {

/// Told of the records that are done and of how many there are.
using ExportProgress = std::function<void(qint64 done, qint64 total)>;

/// What a log is exported as.
enum class ExportFormat {
    Csv,
    InfluxLines,
    PostgresqlCopy,
    OpenMetrics,
    Prometheus, ///< The last values, as its exposition.
};

/// Writes a recording to a new file, which appears when it is complete. Only CSV can be made of a
/// log of version 1.0 too, and of all its times. Otherwise as exportLog().
Expected<qint64> exportRecording(const QString& recordingPath, const QString& outputPath,
                                 ExportFormat format, const recorder::TimeRange& range,
                                 const ExportProgress& progress, bool* isMediumFailing = nullptr);

/// Writes the log in a database to a new CSV file, which appears when it is complete. Returns the
/// number of records. `isMediumFailing`, unless null, tells whether an error came because a disk is
/// full or does not work, and not because of the paths.
Expected<qint64> exportLog(const QString& databasePath, const QString& csvPath,
                           const ExportProgress& progress, bool* isMediumFailing = nullptr);

} // namespace plc::log

#endif
