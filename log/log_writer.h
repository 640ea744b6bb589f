#ifndef PLC_LOG_LOG_WRITER_H
#define PLC_LOG_LOG_WRITER_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "log/log_record.h"
#include "values/expected.h"

namespace plc::log {

/// Records that a log was given and does not have.
struct LogBacklog {
    qint64 waiting = 0; ///< For the next attempt.
    qint64 dropped = 0; ///< There was no room for them.

    qint64 sum() const { return waiting + dropped; }
};

/// Where a log is kept.
class LogWriter {
public:
    virtual ~LogWriter() = default;

    /// Whether records need their value as a text and as a number beside the bytes.
    virtual bool needsTexts() const { return true; }

    /// Nobody looked at the values since the last write().
    virtual void interrupt() {}

    /// What became of the log that its user should know, each once; mostly nothing.
    virtual QString takeRemark() { return {}; }

    /// Whether a log that cannot be written goes on: it can tell of a gap.
    virtual bool keepsTrying() const { return false; }

    virtual LogBacklog backlog() const { return {}; }

    /// Writes what waits, which takes some seconds at most. What is in the backlog behind that is
    /// not known to be written.
    virtual void finish() {}

    /// Keeps the records: they are on the disk when this returns. After an error a log that keeps
    /// trying has them in its backlog, and the next call, to be made also without records, tries
    /// again. Any other log ends, readable, with the records of earlier calls and perhaps some of
    /// these.
    virtual Expected<void> write(const QVector<LogRecord>& records) = 0;
};

} // namespace plc::log

#endif
