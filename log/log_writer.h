#ifndef PLC_LOG_LOG_WRITER_H
#define PLC_LOG_LOG_WRITER_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "log/log_record.h"
#include "values/expected.h"

namespace plc::log {

/// Where a log is kept.
class LogWriter {
public:
    virtual ~LogWriter() = default;

    /// Whether records need their value as a text and as a number beside the bytes.
    virtual bool needsTexts() const { return true; }

    /// Nobody looked at the values since the last write().
    virtual void interrupt() {}

    /// Keeps the records: they are on the disk when this returns. After an error the
    /// log ends, readable, with the records of earlier calls and perhaps some of these.
    virtual Expected<void> write(const QVector<LogRecord>& records) = 0;
};

} // namespace plc::log

#endif
