#include "host/tcp/socket_end.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace plc::host {
namespace {

/// -1 when it cannot be told.
int tcpState(int descriptor)
{
    tcp_info information = {};
    socklen_t size = sizeof(information);
    const int result = ::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &information, &size);
    return result == 0 ? information.tcpi_state : -1;
}

} // namespace

SocketEnd::SocketEnd(qintptr socket) : m_descriptor(::fcntl(int(socket), F_DUPFD_CLOEXEC, 0)) {}

SocketEnd::~SocketEnd()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool SocketEnd::isClosedByPeer() const
{
    return tcpState(m_descriptor) == TCP_CLOSE_WAIT;
}

bool SocketEnd::isResetByPeer() const
{
    return tcpState(m_descriptor) == TCP_CLOSE;
}

bool SocketEnd::hasUnreadBytes() const
{
    int count = 0;
    return ::ioctl(m_descriptor, FIONREAD, &count) == 0 && count > 0;
}

} // namespace plc::host
