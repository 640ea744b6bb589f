#include "gateway/faults/relay.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <vector>

namespace plc::faults {
namespace {

constexpr int kTurn = 10;               // ms
constexpr int kMostWaiting = 64 * 1024; // bytes

sockaddr_in local(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

Relay::Relay(int listenPort, int brokerPort) : m_brokerPort(brokerPort)
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    const sockaddr_in address = local(listenPort);
    if (::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(m_listener, 8) != 0)
        qFatal("cannot listen on port %d", listenPort);
    m_thread = std::thread([this] { run(); });
}

Relay::~Relay()
{
    m_isEnding = true;
    m_thread.join();
    for (const Pair& pair : m_pairs) {
        ::close(pair.ends[0]);
        ::close(pair.ends[1]);
    }
    ::close(m_listener);
}

void Relay::run()
{
    while (!m_isEnding)
        turn();
}

void Relay::turn()
{
    const Mode mode = m_mode;
    std::vector<pollfd> entries{{m_listener, POLLIN, 0}};
    for (const Pair& pair : m_pairs) {
        for (int i : {0, 1}) {
            const bool isRead = mode != Mode::Deaf && pair.waiting[1 - i].size() < kMostWaiting;
            const bool isWritten = mode != Mode::Deaf && !pair.waiting[i].isEmpty();
            entries.push_back(
                {pair.ends[i], short((isRead ? POLLIN : 0) | (isWritten ? POLLOUT : 0)), 0});
        }
    }
    ::poll(entries.data(), nfds_t(entries.size()), kTurn);
    std::size_t next = 1;
    for (auto pair = m_pairs.begin(); pair != m_pairs.end(); next += 2) {
        const short events[2] = {entries[next].revents, entries[next + 1].revents};
        if (mode != Mode::Closed && (mode == Mode::Deaf || move(&*pair, events))) {
            ++pair;
            continue;
        }
        ::close(pair->ends[0]);
        ::close(pair->ends[1]);
        pair = m_pairs.erase(pair);
    }
    if (entries[0].revents != 0)
        accept();
    // A deaf one would be woken by the end of its connections all the time.
    if (mode == Mode::Slow || mode == Mode::Deaf)
        std::this_thread::sleep_for(std::chrono::milliseconds(kTurn));
}

void Relay::accept()
{
    const int gateway = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int broker = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = local(m_brokerPort);
    if (m_mode == Mode::Closed ||
        ::connect(broker, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(gateway);
        ::close(broker);
        return;
    }
    m_pairs.push_back({{gateway, broker}, {}});
}

/// False when the connection is at an end.
bool Relay::move(Pair* pair, const short (&events)[2])
{
    char buffer[16 * 1024];
    // Ten milliseconds a turn: about 5 kB a second.
    const std::size_t most = m_mode == Mode::Slow ? 50 : sizeof(buffer);
    for (int i : {0, 1}) {
        if ((events[i] & (POLLIN | POLLHUP | POLLERR)) != 0) {
            const ssize_t count = ::recv(pair->ends[i], buffer, most, MSG_DONTWAIT);
            if (count == 0 || (count < 0 && errno != EAGAIN))
                return false;
            if (count > 0)
                pair->waiting[1 - i].append(buffer, int(count));
        }
    }
    for (int i : {0, 1}) {
        QByteArray& waiting = pair->waiting[i];
        if (waiting.isEmpty())
            continue;
        const ssize_t count = ::send(pair->ends[i], waiting.constData(),
                                     std::size_t(waiting.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno != EAGAIN)
            return false;
        waiting.remove(0, int(std::max<ssize_t>(count, 0)));
    }
    return true;
}

} // namespace plc::faults
