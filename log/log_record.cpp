#include "log/log_record.h"

#include <QtCore/QDateTime>

namespace plc::log {

std::optional<qint64> parseLogTime(const QString& text)
{
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? std::optional<qint64>(time.toMSecsSinceEpoch()) : std::nullopt;
}

QString logStateWord(LogState state)
{
    switch (state) {
        case LogState::Fresh:
            return QStringLiteral("fresh");
        case LogState::Stale:
            return QStringLiteral("stale");
        case LogState::Refused:
            return QStringLiteral("refused");
        case LogState::Gap:
            break;
    }
    return QStringLiteral("gap");
}

std::optional<LogState> parseLogState(const QString& word)
{
    for (const LogState state :
         {LogState::Fresh, LogState::Stale, LogState::Refused, LogState::Gap}) {
        if (word == logStateWord(state))
            return state;
    }
    return {};
}

QStringList logColumns()
{
    return {QStringLiteral("time"), QStringLiteral("label"), QStringLiteral("value"),
            QStringLiteral("state")};
}

QStringList columnsOfSeveralPlcs()
{
    return logColumns() << QStringLiteral("plc");
}

} // namespace plc::log
