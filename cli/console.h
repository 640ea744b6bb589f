#ifndef PLC_CLI_CONSOLE_H
#define PLC_CLI_CONSOLE_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

#include "cli/style.h"

namespace plc::cli {

/// What the program ends with.
enum ExitCode {
    kExitDone = 0,
    kExitRefused = 1, ///< The PLC or the link refused, or the output could not be written.
    kExitUsage = 2    ///< Wrong usage or project file.
};

// All that the program shows goes through these functions. Lines may hold texts from outside: what
// a terminal would obey in them is shown as an escape.
//
// An output that cannot be written is told once on the standard error, and the program ends with
// kExitRefused at least.

/// One line on the standard output, at once.
void print(const QString& line);

/// The same with a heading that stands out on a terminal.
void print(Emphasis emphasis, const QString& heading, const QString& rest);

/// A text of the program's own in several lines.
void printText(const QString& text);

/// One row of comma-separated values on the standard output.
void printRow(const QStringList& fields);

/// What became of something in the PLC: on the standard output, and on the standard error when
/// that has gone.
void printOutcome(const QString& line);

/// Bytes for the standard output as they stand: those of a screen or of a file. Returns false when
/// they cannot be written.
bool printBytes(const QByteArray& bytes);

/// One line on the standard error, as it stands.
void printError(const QString& line);

/// A text of the program's own in several lines; what it took from outside is visible already.
void printErrorText(const QString& text);

/// One line on the standard error, behind the program's name.
void complain(const QString& line);

/// Whether a file may be written at this place: there is none, or it is a device or a pipe, or
/// `force` is set.
bool mayReplace(const QString& path, bool force);

/// Whether something could not be written to the standard output.
bool isOutputLost();

/// Calls `handle`, once, as soon as something cannot be written; an empty one ends that.
void whenOutputIsLost(std::function<void()> handle);

/// To be called last: closes the standard output. Returns the code to end with.
int finishOutput(int exitCode);

} // namespace plc::cli

#endif
