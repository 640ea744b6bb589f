#ifndef PLC_HOST_CLI_CONSOLE_H
#define PLC_HOST_CLI_CONSOLE_H

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc {

/// What the program ends with.
enum ExitCode {
    kExitDone = 0,
    kExitRefused = 1, ///< The PLC or the link refused.
    kExitUsage = 2    ///< Wrong usage or project file.
};

/// One line on the standard output, at once.
void print(const QString& line);

/// One row of comma-separated values on the standard output.
void printRow(const QStringList& fields);

/// One line on the standard error, as it stands.
void printError(const QString& line);

/// One line on the standard error, behind the program's name.
void complain(const QString& line);

/// Whether a file may be written at this place: there is none, or it is a device or a pipe, or
/// `force` is set.
bool mayReplace(const QString& path, bool force);

} // namespace plc

#endif
