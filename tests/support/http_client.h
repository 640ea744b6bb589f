#ifndef PLC_TESTS_SUPPORT_HTTP_CLIENT_H
#define PLC_TESTS_SUPPORT_HTTP_CLIENT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QtCore/QByteArray>

#include <cstring>

namespace plc::test {

/// What a server answered.
struct HttpAnswer {
    int status = 0; ///< 0: nothing that is an answer.
    QByteArray head;
    QByteArray body;

    /// Of the first header of this name; empty: none.
    QByteArray header(const char* name) const
    {
        for (const QByteArray& line : head.split('\n')) {
            const int colon = int(line.indexOf(':'));
            if (colon > 0 && line.left(colon).toLower() == QByteArray(name).toLower())
                return line.mid(colon + 1).trimmed();
        }
        return {};
    }
};

/// A connection to a web server, byte for byte as a test wants it.
class HttpConnection {
public:
    static constexpr int kPatience = 30000; // ms

    /// `from`: another loopback address that the client has.
    explicit HttpConnection(int port, const char* from = "127.0.0.1")
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = loopback(0);
        ::inet_pton(AF_INET, from, &own.sin_addr);
        const sockaddr_in address = loopback(port);
        m_isMade =
            ::bind(m_socket, reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0 &&
            ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    explicit HttpConnection(const QByteArray& path)
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
        m_isMade =
            ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~HttpConnection() { ::close(m_socket); }
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    bool isMade() const { return m_isMade; }
    int socket() const { return m_socket; }
    /// Whether all of the bytes went out.
    bool send(const QByteArray& bytes)
    {
        for (qint64 sent = 0; sent < bytes.size();) {
            pollfd ready{m_socket, POLLOUT, 0};
            if (::poll(&ready, 1, kPatience) <= 0)
                return false;
            const ssize_t step =
                ::send(m_socket, bytes.constData() + sent, std::size_t(bytes.size() - sent),
                       MSG_NOSIGNAL | MSG_DONTWAIT);
            if (step <= 0)
                return false;
            sent += step;
        }
        return true;
    }
    /// Waits for bytes; false at the end of the connection, or when none come.
    bool receive(int patience = kPatience)
    {
        pollfd ready{m_socket, POLLIN, 0};
        char buffer[65536];
        if (::poll(&ready, 1, patience) <= 0)
            return false;
        const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, 0);
        if (count <= 0)
            return false;
        m_received.append(buffer, int(count));
        return true;
    }
    /// Waits until these bytes were received.
    bool waitFor(const QByteArray& bytes)
    {
        while (!m_received.contains(bytes)) {
            if (!receive())
                return false;
        }
        return true;
    }
    /// Whether the server ends the connection; what it sends before is kept.
    bool ends(int patience = kPatience)
    {
        while (receive(patience)) {
        }
        pollfd ready{m_socket, POLLIN, 0};
        char byte = 0;
        return ::poll(&ready, 1, 0) > 0 && ::recv(m_socket, &byte, 1, MSG_PEEK) <= 0;
    }
    const QByteArray& received() const { return m_received; }
    /// The next answer that has a length, or none.
    HttpAnswer answer(bool isHead = false)
    {
        HttpAnswer answer;
        if (!waitFor("\r\n\r\n"))
            return answer;
        const int end = int(m_received.indexOf("\r\n\r\n")) + 4;
        answer.head = m_received.left(end);
        answer.status = answer.head.mid(9, 3).toInt();
        const int length = isHead ? 0 : answer.header("Content-Length").toInt();
        while (m_received.size() < end + length && receive()) {
        }
        answer.body = m_received.mid(end, length);
        m_received.remove(0, end + length);
        return answer;
    }
    HttpAnswer ask(const QByteArray& request)
    {
        send(request);
        return answer(request.startsWith("HEAD "));
    }
    HttpAnswer get(const QByteArray& target)
    {
        return ask("GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
    }

private:
    static sockaddr_in loopback(int port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(quint16(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    int m_socket;
    bool m_isMade = false;
    QByteArray m_received;
};

} // namespace plc::test

#endif
