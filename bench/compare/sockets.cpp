#include "sockets.h"

#include <arpa/inet.h>
#include <linux/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace plc::bench {
namespace {

/// Descriptors of this process lie below.
constexpr int kDescriptorLimit = 256;

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

const sockaddr* generic(const sockaddr_in& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

/// The descriptor of the connection to the port, or -1.
int socketTo(quint16 port)
{
    for (int descriptor = 0; descriptor < kDescriptorLimit; ++descriptor) {
        sockaddr_in peer = {};
        socklen_t size = sizeof peer;
        if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0 &&
            peer.sin_family == AF_INET && ntohs(peer.sin_port) == port)
            return descriptor;
    }
    return -1;
}

} // namespace

void giveUp(const QString& message)
{
    std::fprintf(stderr, "bench_compare: %s\n", qPrintable(message));
    std::exit(2);
}

void giveUpWithErrno(const char* what)
{
    giveUp(QStringLiteral("%1: %2").arg(QString::fromLatin1(what),
                                        QString::fromLocal8Bit(std::strerror(errno))));
}

int listenAndTell()
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (listener < 0 || ::bind(listener, generic(address), size) != 0 ||
        ::listen(listener, 1) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        giveUpWithErrno("cannot listen on the loopback");
    tellPort(ntohs(address.sin_port));
    return listener;
}

void tellPort(quint16 port)
{
    std::printf("listening on 127.0.0.1:%u\n", unsigned(port));
    std::fflush(stdout);
}

int acceptClient(int listener)
{
    const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0)
        giveUpWithErrno("cannot accept a client");
    sendAtOnce(client);
    return client;
}

int connectTo(quint16 port)
{
    const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (server < 0 || ::connect(server, generic(address), sizeof address) != 0)
        giveUpWithErrno("cannot connect to the server");
    sendAtOnce(server);
    return server;
}

void sendAtOnce(int socket)
{
    const int on = 1;
    if (::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0)
        giveUpWithErrno("cannot set TCP_NODELAY");
}

Traffic trafficTo(quint16 port)
{
    tcp_info info = {};
    socklen_t size = sizeof info;
    if (::getsockopt(socketTo(port), IPPROTO_TCP, TCP_INFO, &info, &size) != 0)
        giveUpWithErrno("cannot read the traffic of the connection");
    Traffic traffic;
    traffic.bytesSent = info.tcpi_bytes_sent;
    traffic.bytesReceived = info.tcpi_bytes_received;
    traffic.segments = quint64(info.tcpi_segs_out) + info.tcpi_segs_in;
    return traffic;
}

} // namespace plc::bench
