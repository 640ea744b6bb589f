#ifndef PLC_PANEL_HTTP_CALLER_H
#define PLC_PANEL_HTTP_CALLER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::panel {

/// What a caller may do. Each role may do all that those before it may.
enum class Role { None, Viewer, Operator, Engineer };

/// Who sends a request.
struct Caller {
    QString user; ///< Empty for somebody who has not said.
    Role role = Role::None;
    QString
        address; ///< Of the other end, without its port; "socket" for the one of the file system.
    QByteArray session; ///< Names the caller's session inside the program; empty: none.
};

} // namespace plc::panel

#endif
