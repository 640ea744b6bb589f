#ifndef PLC_CLI_MEMORY_CHECK_H
#define PLC_CLI_MEMORY_CHECK_H

#include <QtCore/QString>

namespace plc::cli {

/// `plc symbols --check`: lists variables that share memory, and gaps of at least so many bytes.
/// Reads the project itself, also one whose variables share memory without being marked as
/// overlays. Returns the exit code.
int checkMemory(const QString& projectFile, int smallestGap, bool json);

} // namespace plc::cli

#endif
