#ifndef PLC_PANEL_SERVICE_USER_COMMAND_H
#define PLC_PANEL_SERVICE_USER_COMMAND_H

#include <QtCore/QStringList>

#include "values/expected.h"

namespace plc::panel {

/// "add NAME ROLE", whose password comes from the terminal or the standard input, "remove NAME" or
/// "list". Returns what is to be printed.
Expected<QString> changeUsers(const QString& file, const QStringList& words);

} // namespace plc::panel

#endif
