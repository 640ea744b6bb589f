#include "service/listening_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

namespace plc::service {
namespace {

constexpr int kBacklog = 16;
constexpr mode_t kSocketMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP;

Error failure(int socket, const QString& place)
{
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    if (socket >= 0)
        ::close(socket);
    return Error{QStringLiteral("%1: cannot be listened on: %2").arg(place, reason)};
}

template <typename Address>
const sockaddr* general(const Address& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

bool isListenedOn(const sockaddr_un& address)
{
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    // A queue that is full has a process behind it, too.
    const bool isConnected =
        ::connect(probe, general(address), sizeof address) == 0 || errno == EAGAIN;
    ::close(probe);
    return isConnected;
}

/// Takes away a socket that nobody listens on any more.
Expected<void> removeLeftOver(const QString& path, const sockaddr_un& address)
{
    struct stat status = {};
    if (::lstat(address.sun_path, &status) != 0)
        return {};
    if (!S_ISSOCK(status.st_mode))
        return Error{QStringLiteral("%1: exists and is no socket; name another path").arg(path)};
    if (isListenedOn(address))
        return Error{QStringLiteral("%1: another process listens there").arg(path)};
    ::unlink(address.sun_path);
    return {};
}

template <typename Address>
int boundSocket(const Address& address)
{
    const int socket = ::socket(general(address)->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (socket >= 0 && ::bind(socket, general(address), sizeof address) == 0 &&
        ::listen(socket, kBacklog) == 0)
        return socket;
    const int reason = errno;
    ::close(socket);
    errno = reason;
    return -1;
}

} // namespace

Expected<int> listenOnPath(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (name.size() >= int(sizeof address.sun_path)) {
        errno = ENAMETOOLONG;
        return failure(-1, path);
    }
    std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
    const Expected<void> removed = removeLeftOver(path, address);
    if (!removed)
        return removed.error();
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // Nobody can connect before it listens, and by then the permissions are right.
    const bool isDone = socket >= 0 && ::bind(socket, general(address), sizeof address) == 0 &&
                        ::chmod(address.sun_path, kSocketMode) == 0 &&
                        ::listen(socket, kBacklog) == 0;
    if (!isDone)
        return failure(socket, path);
    return socket;
}

Expected<int> listenOnAddress(const QString& address, quint16 port)
{
    const QByteArray text = address.toLatin1();
    sockaddr_in v4 = {};
    sockaddr_in6 v6 = {};
    int socket = -1;
    errno = EADDRNOTAVAIL;
    if (::inet_pton(AF_INET, text.constData(), &v4.sin_addr) == 1) {
        v4.sin_family = AF_INET;
        v4.sin_port = htons(port);
        socket = boundSocket(v4);
    } else if (::inet_pton(AF_INET6, text.constData(), &v6.sin6_addr) == 1) {
        v6.sin6_family = AF_INET6;
        v6.sin6_port = htons(port);
        socket = boundSocket(v6);
    }
    if (socket < 0)
        return failure(socket, QStringLiteral("%1 port %2").arg(address).arg(port));
    return socket;
}

quint16 listeningPort(int socket)
{
    sockaddr_in6 address = {}; // has room for either, which have the port at the same place
    socklen_t size = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin6_port);
}

} // namespace plc::service
