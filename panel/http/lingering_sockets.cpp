#include "panel/http/lingering_sockets.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace plc::panel {
namespace {

constexpr int kRounds = 10;   // of a moment
constexpr int kPatience = 10; // ms
constexpr std::size_t kDiscarded = std::size_t(64) * 1024;

} // namespace

LingeringSockets::~LingeringSockets()
{
    takeNew();
    for (const Socket& each : m_sockets)
        ::close(each.socket);
}

void LingeringSockets::add(int socket, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (int(m_new.size()) >= kMost)
        return;
    const int own = ::fcntl(socket, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        return;
    ::shutdown(own, SHUT_WR);
    m_new.push_back({own, now + kTime, 0});
}

void LingeringSockets::takeNew()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Socket& each : m_new) {
        if (int(m_sockets.size()) < kMost)
            m_sockets.push_back(each);
        else
            ::close(each.socket);
    }
    m_new.clear();
}

void LingeringSockets::drain(qint64 now)
{
    takeNew();
    for (int round = 0; round < kRounds && !m_sockets.empty(); ++round) {
        const bool hasRead = readSome();
        closeEnded(now);
        if (!hasRead)
            break;
    }
}

/// Whether there was something.
bool LingeringSockets::readSome()
{
    static thread_local char buffer[kDiscarded];
    std::vector<pollfd> ready;
    for (const Socket& each : m_sockets)
        ready.push_back({each.socket, POLLIN, 0});
    if (::poll(ready.data(), nfds_t(ready.size()), kPatience) <= 0)
        return false;
    for (Socket& each : m_sockets) {
        ssize_t count = 0;
        while (each.read < kMostBytes &&
               (count = ::recv(each.socket, buffer, sizeof buffer, MSG_DONTWAIT)) > 0)
            each.read += count;
        const bool isOver = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
        if (isOver || each.read >= kMostBytes)
            each.end = 0;
    }
    return true;
}

void LingeringSockets::closeEnded(qint64 now)
{
    const auto isOver = [now](const Socket& each) {
        if (now < each.end)
            return false;
        ::close(each.socket);
        return true;
    };
    m_sockets.erase(std::remove_if(m_sockets.begin(), m_sockets.end(), isOver), m_sockets.end());
}

} // namespace plc::panel
