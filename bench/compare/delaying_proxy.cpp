#include "delaying_proxy.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <vector>

#include "sockets.h"

namespace plc::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kPieceSize = 64 * 1024;

/// One direction of a connection.
class Channel {
public:
    Channel(int from, int to, Clock::duration delay) : m_from(from), m_to(to), m_delay(delay) {}

    bool hasEnded() const { return m_hasEnded && m_pieces.empty(); }
    /// When the next bytes are to go on; nothing while there are none.
    std::optional<Clock::time_point> due() const
    {
        return m_pieces.empty() ? std::nullopt : std::optional(m_pieces.front().due);
    }
    pollfd source() const { return {m_hasEnded ? -1 : m_from, POLLIN, 0}; }

    void take()
    {
        std::vector<char> bytes(kPieceSize);
        const ssize_t count = ::recv(m_from, bytes.data(), bytes.size(), MSG_DONTWAIT);
        m_hasEnded = count <= 0;
        bytes.resize(size_t(std::max<ssize_t>(count, 0)));
        m_pieces.push_back({Clock::now() + m_delay, std::move(bytes)});
    }

    /// Sends on what is due; the end of the stream goes on like everything else.
    void pass(Clock::time_point now)
    {
        for (; !m_pieces.empty() && m_pieces.front().due <= now; m_pieces.pop_front())
            passPiece(m_pieces.front().bytes);
    }

private:
    struct Piece {
        Clock::time_point due;
        std::vector<char> bytes; ///< None: the stream ends.
    };

    void passPiece(const std::vector<char>& bytes)
    {
        if (bytes.empty())
            ::shutdown(m_to, SHUT_WR);
        for (size_t sent = 0; sent < bytes.size();) {
            const ssize_t count =
                ::send(m_to, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count < 0)
                return; // The receiver is gone; the other direction notices.
            sent += size_t(count);
        }
    }

    const int m_from;
    const int m_to;
    const Clock::duration m_delay;
    std::deque<Piece> m_pieces;
    bool m_hasEnded = false;
};

/// Time until the first of the channels has something due; nothing when none has.
std::optional<timespec> timeToWait(const Channel& a, const Channel& b)
{
    std::optional<Clock::time_point> due = a.due();
    if (!due || (b.due() && *b.due() < *due))
        due = b.due();
    if (!due)
        return std::nullopt;
    const auto left = std::max(Clock::duration::zero(), *due - Clock::now());
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
    constexpr long kNanosecondsInSecond = 1000000000;
    return timespec{nanoseconds / kNanosecondsInSecond, nanoseconds % kNanosecondsInSecond};
}

void relay(int client, int server, Clock::duration delay)
{
    Channel requests(client, server, delay);
    Channel replies(server, client, delay);
    while (!requests.hasEnded() || !replies.hasEnded()) {
        pollfd sources[] = {requests.source(), replies.source()};
        const std::optional<timespec> timeout = timeToWait(requests, replies);
        if (::ppoll(sources, 2, timeout ? &*timeout : nullptr, nullptr) < 0)
            giveUpWithErrno("the proxy cannot wait");
        if (sources[0].revents != 0)
            requests.take();
        if (sources[1].revents != 0)
            replies.take();
        requests.pass(Clock::now());
        replies.pass(Clock::now());
    }
}

} // namespace

void runDelayingProxy(quint16 serverPort, std::chrono::microseconds roundTrip)
{
    // Without it the kernel adds up to 50 us to each wait.
    ::prctl(PR_SET_TIMERSLACK, 1);
    const int listener = listenAndTell();
    for (;;) {
        const int client = acceptClient(listener);
        const int server = connectTo(serverPort);
        relay(client, server, roundTrip / 2);
        ::close(client);
        ::close(server);
    }
}

} // namespace plc::bench
