#ifndef PLC_SERVICE_CONSOLE_H
#define PLC_SERVICE_CONSOLE_H

#include <QtCore/QString>

namespace plc::service {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1; ///< Something failed while it ran.
constexpr int kExitWrongUse =
    2; ///< Wrong use or configuration, which does not get better by itself.

/// A line on the standard output, as it is. Returns whether it was written.
bool print(const QString& text);

/// A line for those who operate the program, on the standard error; the journal has the time of
/// each.
void log(const QString& line);

/// The line behind the program's name. Returns the exit code.
int complain(const QString& line, int exitCode);

} // namespace plc::service

#endif
