#include "panel/access/role_name.h"

namespace plc::panel {

QString roleName(Role role)
{
    switch (role) {
        case Role::Viewer:
            return QStringLiteral("viewer");
        case Role::Operator:
            return QStringLiteral("operator");
        case Role::Engineer:
            return QStringLiteral("engineer");
        case Role::None:
            break;
    }
    return {};
}

std::optional<Role> findRole(const QString& name)
{
    for (const Role role : {Role::Viewer, Role::Operator, Role::Engineer}) {
        if (name == roleName(role))
            return role;
    }
    return std::nullopt;
}

} // namespace plc::panel
