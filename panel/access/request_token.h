#ifndef PLC_PANEL_ACCESS_REQUEST_TOKEN_H
#define PLC_PANEL_ACCESS_REQUEST_TOKEN_H

#include <QtCore/QByteArray>

namespace plc::panel {

/// Name of the cookie that holds the token of a server with this port, 0 without one. Browsers keep
/// cookies by host and path alone: of the servers of a machine each needs a name of its own.
QByteArray cookieName(quint16 port);

/// The token of a request: that of Authorization ("Bearer …"), else that of the cookie `name`.
/// Empty: none, or more than one cookie of that name.
QByteArray requestToken(const QByteArray& name, const QByteArray& cookie,
                        const QByteArray& authorization);

/// Value of Set-Cookie that keeps a token for so many seconds; an empty token takes it away.
QByteArray sessionCookie(const QByteArray& name, const QByteArray& token, qint64 seconds,
                         bool isEncrypted);

} // namespace plc::panel

#endif
