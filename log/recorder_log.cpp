#include "log/recorder_log.h"

namespace plc::log {

Expected<std::unique_ptr<RecorderLog>> RecorderLog::open(
    const QString& path, const QHash<QString, recorder::SeriesDescription>& series,
    const LogClock& clock, bool* isMediumFailing)
{
    Expected<std::unique_ptr<recorder::Recorder>> opened =
        recorder::Recorder::open(path, recorder::Limits(), clock(), isMediumFailing);
    if (!opened)
        return opened.error();
    std::unique_ptr<RecorderLog> log(new RecorderLog(series, clock));
    log->m_recorder = std::move(*opened);
    return log;
}

Expected<void> RecorderLog::write(const QVector<LogRecord>& records)
{
    QVector<recorder::Change> changes;
    for (const LogRecord& record : records) {
        const int series = m_recorder->series(m_series.value(record.label));
        changes.append({series, {record.time, qualityOf(record.state), record.bytes}});
    }
    return m_recorder->append(changes, m_clock());
}

recorder::Quality qualityOf(LogState state)
{
    switch (state) {
        case LogState::Fresh:
            return recorder::Quality::Good;
        case LogState::Stale:
            return recorder::Quality::Stale;
        case LogState::Refused:
            break;
    }
    return recorder::Quality::Bad;
}

std::optional<LogState> stateOf(recorder::Quality quality)
{
    switch (quality) {
        case recorder::Quality::Good:
            return LogState::Fresh;
        case recorder::Quality::Stale:
            return LogState::Stale;
        case recorder::Quality::Bad:
            return LogState::Refused;
        case recorder::Quality::Gap:
            break;
    }
    return {};
}

} // namespace plc::log
