#ifndef PLC_TESTS_SUPPORT_FREE_PORT_H
#define PLC_TESTS_SUPPORT_FREE_PORT_H

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QtCore/QByteArray>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <random>

namespace plc::test {

/// Whether the port is this process's from now on to its end, or another test has it: who holds a
/// name in the system's table of local sockets that says so.
inline bool reservePort(quint16 port)
{
    const QByteArray name = "plc test port " + QByteArray::number(port);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name.constData(), std::size_t(name.size()));
    const auto size = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + std::size_t(name.size()));
    const int held = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (::bind(held, reinterpret_cast<const sockaddr*>(&address), size) == 0)
        return true; // It stays open.
    ::close(held);
    return false;
}

/// Whether nobody listens there at this moment.
inline bool isUnused(quint16 port)
{
    const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int isReused = 1; // as servers do: connections that have ended are in nobody's way
    ::setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &isReused, sizeof isReused);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    const bool isFree =
        ::bind(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(probe, 1) == 0;
    ::close(probe);
    return isFree;
}

/// A port that nobody listens on, and that no other test takes as long as this process runs, also
/// while its server is away. It is none of those that the system gives to whoever asks for any.
inline quint16 freePort()
{
    constexpr int kFirst = 10240;
    constexpr int kLast = 32767;
    std::random_device random;
    std::uniform_int_distribution<int> any(kFirst, kLast);
    for (int i = 0; i < kLast - kFirst; ++i) {
        const auto port = quint16(any(random));
        if (reservePort(port) && isUnused(port))
            return port;
    }
    std::abort();
}

} // namespace plc::test

#endif
