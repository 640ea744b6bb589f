#ifndef PLC_PANEL_SERVICE_USER_COMMAND_H
#define PLC_PANEL_SERVICE_USER_COMMAND_H

#include <QtCore/QStringList>

#include "values/expected.h"

namespace plc::panel {

/// "add NAME ROLE", whose password comes from the terminal or the standard input, "remove NAME",
/// "list", "token NAME", which makes a token for the user's program in place of the last one, or
/// "revoke NAME". Returns what is to be printed: of "token" the token and nothing else.
Expected<QString> changeUsers(const QString& file, const QStringList& words);

} // namespace plc::panel

#endif
