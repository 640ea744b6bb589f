#include "log/recorder_log.h"

namespace plc::log {
namespace {

/// More than SQLite waits for somebody who has the database locked, and less than what counts as a
/// pause.
constexpr std::chrono::milliseconds kPatience(3000);
/// Who waits reads no PLC meanwhile.
constexpr std::chrono::milliseconds kPatienceBehind(100);

} // namespace

Expected<std::unique_ptr<RecorderLog>> RecorderLog::open(
    const QString& path, const QHash<QString, recorder::SeriesDescription>& series,
    const LogClock& clock, bool* isMediumFailing, const recorder::QueueLimits& limits)
{
    Expected<std::unique_ptr<recorder::RecorderThread>> opened =
        recorder::RecorderThread::start(path, recorder::Limits(), clock(), limits, isMediumFailing);
    if (!opened)
        return opened.error();
    std::unique_ptr<RecorderLog> log(new RecorderLog(series, clock));
    log->m_recorder = std::move(*opened);
    return log;
}

LogBacklog RecorderLog::backlog() const
{
    const recorder::RecorderStatus status = m_recorder->status();
    return {status.waiting, status.dropped};
}

Expected<void> RecorderLog::write(const QVector<LogRecord>& records)
{
    QVector<recorder::Change> changes;
    for (const LogRecord& record : records) {
        const int series = m_recorder->series(m_series.value(record.label));
        changes.append({series, {record.time, qualityOf(record.state), record.bytes}});
    }
    m_recorder->append(changes, m_clock());
    Expected<void> recorded = m_recorder->drain(m_isBehind ? kPatienceBehind : kPatience);
    m_isBehind = !recorded && m_recorder->status().error.isEmpty();
    return recorded;
}

QString RecorderLog::takeRemark()
{
    const int files = m_recorder->status().changedFiles;
    if (m_toldFiles == files)
        return {};
    m_toldFiles = files;
    return QStringLiteral(
        "the log was moved or removed while it was written; it goes on in another"
        " file of its name");
}

recorder::Quality qualityOf(LogState state)
{
    switch (state) {
        case LogState::Fresh:
            return recorder::Quality::Good;
        case LogState::Stale:
            return recorder::Quality::Stale;
        case LogState::Refused:
            return recorder::Quality::Bad;
        case LogState::Gap:
            break;
    }
    return recorder::Quality::Gap;
}

LogState stateOf(recorder::Quality quality)
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
    return LogState::Gap;
}

} // namespace plc::log
