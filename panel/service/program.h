#ifndef PLC_PANEL_SERVICE_PROGRAM_H
#define PLC_PANEL_SERVICE_PROGRAM_H

#include <QtCore/QStringList>

namespace plc::panel {

/// What main() does with the command line. Returns the exit code: 0 done, 1 something failed while
/// it ran, 2 wrong use or configuration.
int runProgram(const QStringList& arguments);

} // namespace plc::panel

#endif
