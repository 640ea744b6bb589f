#include "panel/http/server.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <thread>
#include <utility>

#include "panel/http/exchange.h"
#include "panel/http/loopback.h"
#include "panel/http/server_core.h"
#include "service/listening_socket.h"
#include "values/steady_time.h"

namespace plc::panel {
namespace {

constexpr int kBacklog = 128;
constexpr int kSendBuffer = 128 * 1024; // bytes that the system keeps for a slow client
constexpr int kSpareConnections = 64;   // that are being ended while others come
constexpr std::chrono::milliseconds kWatchPeriod{250};
constexpr intptr_t kRecords =
    intptr_t(32) * 1024; // bytes for what libmicrohttpd notes of each field

/// TLS 1.2 and 1.3, forward secrecy and authenticated encryption alone.
constexpr char kPriorities[] =
    "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2:-KX-ALL:+ECDHE-ECDSA:+ECDHE-RSA:"
    "-CIPHER-ALL:+AES-256-GCM:+CHACHA20-POLY1305:+AES-128-GCM:-MAC-ALL:+AEAD:"
    "-GROUP-ALL:+GROUP-X25519:+GROUP-SECP256R1:+GROUP-SECP384R1:"
    "-SIGN-ECDSA-SHA1:-SIGN-RSA-SHA1:%SERVER_PRECEDENCE";

using Holder = std::shared_ptr<Exchange>;

QString addressText(const sockaddr* address)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (address && address->sa_family == AF_INET)
        ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text,
                    sizeof text);
    else if (address && address->sa_family == AF_INET6)
        ::inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, text,
                    sizeof text);
    return text[0] ? QString::fromLatin1(text) : QStringLiteral("socket");
}

/// In the thread that goes on with the connection, where nothing of TLS has happened yet.
MHD_Result admit(void* cls, const sockaddr* address, socklen_t)
{
    ServerCore* core = static_cast<ServerCore*>(cls);
    core->identities.useInThisThread();
    return core->admit(addressText(address)) ? MHD_YES : MHD_NO;
}

/// Memory of a connection. libmicrohttpd copies the cookies, which may be nearly all of a head, and
/// gives no answer at all where there is no room for that.
intptr_t poolSize(int mostHeadBytes)
{
    return 2 * intptr_t(mostHeadBytes) + kRecords;
}

/// libmicrohttpd would note each parameter in the connection's memory, and leave a request with too
/// many of them without an answer. What it is about to look through is its own, as is this text.
void takeQueryAway(const char* target)
{
    const char* const mark = target ? std::strchr(target, '?') : nullptr;
    if (mark && mark[1] != '\0')
        const_cast<char*>(mark)[1] = '\0';
}

void connectionBegins(ServerCore* core, MHD_Connection* handle, void** context)
{
    auto connection = std::make_shared<Connection>();
    connection->suspension = std::make_shared<Suspension>(handle);
    connection->socket =
        ::MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    connection->address = addressText(
        ::MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr);
    connection->isEncrypted = ::MHD_get_connection_info(handle, MHD_CONNECTION_INFO_PROTOCOL);
    ::setsockopt(connection->socket, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
    core->add(connection);
    *context = new std::shared_ptr<Connection>(connection);
}

void notifyConnection(void* cls, MHD_Connection* handle, void** context,
                      MHD_ConnectionNotificationCode code)
{
    ServerCore* core = static_cast<ServerCore*>(cls);
    if (code == MHD_CONNECTION_NOTIFY_STARTED) {
        connectionBegins(core, handle, context);
        return;
    }
    auto* connection = static_cast<std::shared_ptr<Connection>*>(*context);
    (*connection)->suspension->forget();
    if ((*connection)->isSentTo)
        core->lingering.add((*connection)->socket, values::steadyTime());
    core->remove(**connection);
    delete connection;
    *context = nullptr;
}

/// The first that is heard of a request. What it returns becomes the request's context.
void* requestBegins(void* cls, const char* target, MHD_Connection* handle)
{
    ServerCore* core = static_cast<ServerCore*>(cls);
    const MHD_ConnectionInfo* info =
        ::MHD_get_connection_info(handle, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    const auto& connection = *static_cast<std::shared_ptr<Connection>*>(info->socket_context);
    const auto exchange = std::make_shared<Exchange>(core, connection, handle, target);
    core->setExchange(connection.get(), exchange);
    takeQueryAway(target);
    return new Holder(exchange);
}

MHD_Result requestGoesOn(void*, MHD_Connection*, const char*, const char* method,
                         const char* version, const char* upload, std::size_t* uploadSize,
                         void** context)
{
    if (!*context)
        return MHD_NO;
    return (*static_cast<Holder*>(*context))->step(version, method, upload, uploadSize);
}

void requestEnds(void*, MHD_Connection*, void** context, MHD_RequestTerminationCode)
{
    Holder* holder = static_cast<Holder*>(*context);
    if (!holder)
        return;
    (*holder)->complete();
    delete holder;
    *context = nullptr;
}

/// Targets are decoded by parseTarget(), which knows where their parts end.
std::size_t leaveEscaped(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

} // namespace

class Server::Private {
public:
    Private(const ServerSettings& settings, RouteTable routes, Guard* guard)
        : m_core(settings, std::move(routes), guard)
    {
    }
    ~Private();
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    Expected<void> listen();
    quint16 port() const { return m_port; }
    ServerStatistics statistics() const { return m_core.statistics(); }
    Expected<QDateTime> readCertificate();

private:
    Expected<void> listenOnTcp();
    Expected<void> listenOnSocket();
    Expected<void> startDaemon(int socket, bool isEncrypted);
    void watch();

    ServerCore m_core;
    std::vector<MHD_Daemon*> m_daemons;
    QString m_socketPath; ///< That has to be removed.
    quint16 m_port = 0;

    std::mutex m_mutex; ///< Guards m_isEnding.
    std::condition_variable m_ending;
    bool m_isEnding = false;
    std::thread m_watch;
};

Expected<void> Server::Private::listen()
{
    const ServerSettings& settings = m_core.settings();
    if (!settings.address.isEmpty()) {
        const Expected<void> listening = listenOnTcp();
        if (!listening)
            return listening.error();
    }
    if (!settings.socket.isEmpty()) {
        const Expected<void> listening = listenOnSocket();
        if (!listening)
            return listening.error();
    }
    m_watch = std::thread([this] { watch(); });
    return {};
}

Expected<void> Server::Private::listenOnTcp()
{
    const ServerSettings& settings = m_core.settings();
    const bool isEncrypted = !settings.certificate.isEmpty();
    if (!isEncrypted && !isLoopbackAddress(settings.address))
        return Error{QStringLiteral("%1: other addresses than this machine's own (127.0.0.1, ::1) "
                                    "need a certificate")
                         .arg(settings.address)};
    if (isEncrypted) {
        const Expected<QDateTime> isRead = readCertificate();
        if (!isRead)
            return isRead.error();
    }
    const Expected<int> socket = service::listenOnAddress(settings.address, settings.port);
    if (!socket)
        return socket.error();
    m_port = service::listeningPort(*socket);
    return startDaemon(*socket, isEncrypted);
}

Expected<void> Server::Private::listenOnSocket()
{
    const QString& path = m_core.settings().socket;
    const Expected<int> socket = service::listenOnPath(path);
    if (!socket)
        return socket.error();
    m_socketPath = path;
    return startDaemon(*socket, false);
}

Expected<QDateTime> Server::Private::readCertificate()
{
    return m_core.identities.load(m_core.settings().certificate, m_core.settings().key);
}

Expected<void> Server::Private::startDaemon(int socket, bool isEncrypted)
{
    ::listen(socket, kBacklog);
    const ServerSettings& settings = m_core.settings();
    const unsigned int most = unsigned(settings.mostConnections + kSpareConnections);
    std::vector<MHD_OptionItem> options = {
        {MHD_OPTION_LISTEN_SOCKET, socket, nullptr},
        {MHD_OPTION_CONNECTION_LIMIT, intptr_t(most), nullptr},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, poolSize(settings.mostHeadBytes), nullptr},
        // Strictly, it ends connections in places where we can say what is wrong.
        {MHD_OPTION_STRICT_FOR_CLIENT, 0, nullptr}};
    if (isEncrypted) {
        options.push_back(
            {MHD_OPTION_HTTPS_CERT_CALLBACK, 0, reinterpret_cast<void*>(&TlsIdentities::choose)});
        options.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>(kPriorities)});
    }
    options.push_back({MHD_OPTION_END, 0, nullptr});
    const unsigned int flags = unsigned(MHD_USE_EPOLL_INTERNAL_THREAD) | unsigned(MHD_USE_ITC) |
                               unsigned(MHD_ALLOW_SUSPEND_RESUME) |
                               (isEncrypted ? unsigned(MHD_USE_TLS) : 0U);
    MHD_Daemon* daemon = ::MHD_start_daemon(
        flags, 0, &admit, &m_core, &requestGoesOn, &m_core, MHD_OPTION_URI_LOG_CALLBACK,
        &requestBegins, &m_core, MHD_OPTION_NOTIFY_COMPLETED, &requestEnds, &m_core,
        MHD_OPTION_NOTIFY_CONNECTION, &notifyConnection, &m_core, MHD_OPTION_UNESCAPE_CALLBACK,
        &leaveEscaped, nullptr, MHD_OPTION_ARRAY, options.data(), MHD_OPTION_END);
    if (!daemon) {
        ::close(socket);
        return Error{QStringLiteral("the web server cannot be started")};
    }
    m_daemons.push_back(daemon);
    return {};
}

void Server::Private::watch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ending.wait_for(lock, kWatchPeriod, [this] { return m_isEnding; }))
        m_core.endOverdue();
}

Server::Private::~Private()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_ending.notify_one();
    if (m_watch.joinable())
        m_watch.join();
    if (!m_socketPath.isEmpty())
        QFile::remove(m_socketPath);
    m_core.endAll();
    for (MHD_Daemon* daemon : m_daemons)
        ::MHD_stop_daemon(daemon); // closes the socket
}

Expected<void> checkCertificate(const ServerSettings& settings)
{
    if (settings.certificate.isEmpty())
        return {};
    const auto loaded = TlsIdentity::load(settings.certificate, settings.key);
    return loaded ? Expected<void>() : Expected<void>(loaded.error());
}

Expected<std::unique_ptr<Server>> Server::start(const ServerSettings& settings,
                                                const QVector<Route>& routes, Guard* guard)
{
    Expected<RouteTable> table = RouteTable::make(routes);
    if (!table)
        return table.error();
    auto d = std::make_unique<Private>(settings, std::move(*table), guard);
    const Expected<void> listening = d->listen();
    if (!listening)
        return listening.error();
    return std::unique_ptr<Server>(new Server(std::move(d)));
}

Server::Server(std::unique_ptr<Private> d) : m_d(std::move(d)) {}

Server::~Server() = default;

quint16 Server::port() const
{
    return m_d->port();
}

Expected<QDateTime> Server::readCertificate()
{
    return m_d->readCertificate();
}

ServerStatistics Server::statistics() const
{
    return m_d->statistics();
}

} // namespace plc::panel
