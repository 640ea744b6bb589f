#ifndef PLC_CLI_TIME_TEXT_H
#define PLC_CLI_TIME_TEXT_H

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace plc::cli {

/// A moment in the time zone that it was given in, with its distance from UTC, so that it is clear
/// also where the clock is set back or on another computer: 2026-11-21T07:40:34.525+01:00. UTC
/// itself ends in Z.
QString timeText(const QDateTime& time);

/// The present moment in the time zone of this computer.
QString wallClock();

} // namespace plc::cli

#endif
