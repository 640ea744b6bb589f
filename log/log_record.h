#ifndef PLC_LOG_LOG_RECORD_H
#define PLC_LOG_LOG_RECORD_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace plc::log {

enum class LogState {
    Fresh,
    Stale,   ///< Too old to be relied on, or never read.
    Refused, ///< The PLC does not give it.
    Gap      ///< Nothing was recorded from then on.
};

/// One value at one time, as it goes into a log.
struct LogRecord {
    qint64 time = 0; ///< Milliseconds since 1970-01-01T00:00:00Z.
    QString plc;     ///< Of a log of several PLCs.
    QString label;
    QString value;                ///< As `plc read` shows it; empty when it was never read.
    std::optional<double> number; ///< The value, where it is a single number.
    LogState state = LogState::Fresh;
    QByteArray bytes; ///< The value as the driver gives it; empty when it was never read.
};

/// The time that values::utcTimeText() wrote; nothing if it is none.
std::optional<qint64> parseLogTime(const QString& text);

/// "fresh", "stale", "refused" or "gap"
QString logStateWord(LogState state);

/// The state of that word; nothing if it is none.
std::optional<LogState> parseLogState(const QString& word);

/// Names of the columns of a log in CSV.
QStringList logColumns();
/// Of a log in which the records of several PLCs have to be told apart, by a last column.
QStringList columnsOfSeveralPlcs();

} // namespace plc::log

#endif
