#ifndef PLC_HOST_TCP_SOCKET_END_H
#define PLC_HOST_TCP_SOCKET_END_H

#include <QtCore/QtGlobal>

#include "values/export.h"

namespace plc::host {

/// Sees how a connection ended, also after the socket that it belongs to was closed, by a
/// descriptor of its own. The connection stays open as long as this lives.
class PLC_HOST_EXPORT SocketEnd {
public:
    explicit SocketEnd(qintptr socket);
    ~SocketEnd();
    SocketEnd(const SocketEnd&) = delete;
    SocketEnd& operator=(const SocketEnd&) = delete;

    /// The peer has sent the end of its stream, or has broken the connection off.
    bool isClosedByPeer() const;
    bool isResetByPeer() const;
    /// Bytes arrived that were not read: closing breaks the connection off.
    bool hasUnreadBytes() const;

private:
    int m_descriptor;
};

} // namespace plc::host

#endif
