#ifndef PLC_SERVICE_LISTENING_SOCKET_H
#define PLC_SERVICE_LISTENING_SOCKET_H

#include <QtCore/QString>

#include "values/expected.h"

namespace plc::service {

/// A socket in the file system that listens, for owner and group alone. One that a process left
/// behind is replaced; an error when a process still listens there, or when it is another file. The
/// caller closes the descriptor, and removes the file before that.
Expected<int> listenOnPath(const QString& path);

/// A TCP socket that listens on an address of this machine, IPv4 or IPv6. The caller closes it.
Expected<int> listenOnAddress(const QString& address, quint16 port);

/// The port that a socket of listenOnAddress() has, also if 0 was asked for.
quint16 listeningPort(int socket);

} // namespace plc::service

#endif
