#ifndef PLC_PANEL_ACCESS_ROLE_NAME_H
#define PLC_PANEL_ACCESS_ROLE_NAME_H

#include <QtCore/QString>

#include <optional>

#include "panel/http/caller.h"

namespace plc::panel {

/// "viewer", "operator", "engineer"; empty for none.
QString roleName(Role role);
std::optional<Role> findRole(const QString& name);

} // namespace plc::panel

#endif
