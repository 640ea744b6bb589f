#ifndef PLC_LOG_RECORDER_LOG_H
#define PLC_LOG_RECORDER_LOG_H

#include <QtCore/QHash>

#include <functional>
#include <memory>

#include "log/log_writer.h"
#include "recorder/recorder_thread.h"

namespace plc::log {

/// Milliseconds since 1970-01-01T00:00:00Z.
using LogClock = std::function<qint64()>;

/// A log as a recording, which has the bytes of the values and tells when nothing was logged.
///
/// What cannot be written waits, within a limit, and is tried again by each write(). What there is
/// no room for, or is not written when this ends, shows as a gap. A disk that hangs is waited for
/// no longer than a few seconds.
class RecorderLog : public LogWriter {
public:
    /// Begins a log, or goes on with it where the file exists. `series` tells of each label what
    /// it is. `isMediumFailing`, unless null, tells whether an error came because nothing could be
    /// written, and not because of the path.
    static Expected<std::unique_ptr<RecorderLog>> open(
        const QString& path, const QHash<QString, recorder::SeriesDescription>& series,
        const LogClock& clock, bool* isMediumFailing = nullptr,
        const recorder::QueueLimits& limits = {});

    bool needsTexts() const override { return false; }
    void interrupt() override { m_recorder->interrupt(); }
    bool keepsTrying() const override { return true; }
    LogBacklog backlog() const override;
    void finish() override { m_recorder->finish(); }
    /// That the file was moved or removed, and another one is gone on with.
    QString takeRemark() override;
    /// Also without records: the values are known to hold on.
    Expected<void> write(const QVector<LogRecord>& records) override;

private:
    RecorderLog(const QHash<QString, recorder::SeriesDescription>& series, const LogClock& clock)
        : m_series(series), m_clock(clock)
    {
    }

    const QHash<QString, recorder::SeriesDescription> m_series;
    const LogClock m_clock;
    std::unique_ptr<recorder::RecorderThread> m_recorder;
    bool m_isBehind = false; ///< The disk did not answer the last write().
    int m_toldFiles = 0;
};

/// What a recording says of the state of a record.
recorder::Quality qualityOf(LogState state);

/// The state of a record; nothing of a gap.
LogState stateOf(recorder::Quality quality);

} // namespace plc::log

#endif
