#ifndef PLC_PANEL_ACCESS_SECRETS_H
#define PLC_PANEL_ACCESS_SECRETS_H

#include <QtCore/QByteArray>

namespace plc::panel {

/// Bytes that nobody can guess.
QByteArray randomBytes(int count);
/// SHA-256 in hexadecimal digits, as sha256sum shows it.
QByteArray sha256(const QByteArray& bytes);

} // namespace plc::panel

#endif
