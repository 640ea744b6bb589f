#ifndef PLC_PANEL_ACCESS_SECRETS_H
#define PLC_PANEL_ACCESS_SECRETS_H

#include <QtCore/QByteArray>

namespace plc::panel {

/// Bytes that nobody can guess.
QByteArray randomBytes(int count);
/// 256 random bits as text that headers and cookies can hold.
QByteArray randomToken();
/// What is kept of a token.
QByteArray tokenHash(const QByteArray& token);
/// SHA-256 in hexadecimal digits, as sha256sum shows it.
QByteArray sha256(const QByteArray& bytes);

} // namespace plc::panel

#endif
