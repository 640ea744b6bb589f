#ifndef PLC_LOG_LOG_WRITER_H
#define PLC_LOG_LOG_WRITER_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "log/log_record.h"

namespace plc::log {

/// Where a log is kept.
class LogWriter {
public:
    virtual ~LogWriter() = default;

    /// Keeps the records: they are on the disk when this returns. On failure returns false and sets
    /// `error`; the log then ends, readable, with the records of earlier calls and perhaps some of
    /// these.
    virtual bool write(const QVector<LogRecord>& records, QString* error) = 0;
};

} // namespace plc::log

#endif
