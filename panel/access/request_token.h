#ifndef PLC_PANEL_ACCESS_REQUEST_TOKEN_H
#define PLC_PANEL_ACCESS_REQUEST_TOKEN_H

#include <QtCore/QByteArray>

namespace plc::panel {

/// The token of a request: that of Authorization ("Bearer …"), else that of the cookie plc_panel.
/// Empty: none, or more than one cookie of that name.
QByteArray requestToken(const QByteArray& cookie, const QByteArray& authorization);

/// Value of Set-Cookie that keeps a token for so many seconds; an empty token takes it away.
QByteArray sessionCookie(const QByteArray& token, qint64 seconds, bool isEncrypted);

} // namespace plc::panel

#endif
