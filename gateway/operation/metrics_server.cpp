#include "gateway/operation/metrics_server.h"

#include <microhttpd.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cstring>

#include "service/listening_socket.h"

namespace plc::gateway {
namespace {

constexpr std::size_t kConnectionMemory =
    std::size_t(16) * 1024; // bytes: of a request's headers and the reply's

MHD_Result reply(MHD_Connection* connection, unsigned int status, const QByteArray& text)
{
    MHD_Response* response = ::MHD_create_response_from_buffer(
        std::size_t(text.size()), const_cast<char*>(text.constData()), MHD_RESPMEM_MUST_COPY);
    if (!response)
        return MHD_NO;
    ::MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE,
                              "text/plain; version=0.0.4; charset=utf-8");
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED)
        ::MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    const MHD_Result queued = ::MHD_queue_response(connection, status, response);
    ::MHD_destroy_response(response);
    return queued;
}

/// Called on the server's thread when the headers of a request are there.
MHD_Result answer(void* server, MHD_Connection* connection, const char* url, const char* method,
                  const char*, const char*, std::size_t*, void**)
{
    const bool isKnown = std::strcmp(method, MHD_HTTP_METHOD_GET) == 0 ||
                         std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
    if (!isKnown)
        return reply(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "only GET and HEAD\n");
    if (std::strcmp(url, "/metrics") != 0)
        return reply(connection, MHD_HTTP_NOT_FOUND, "only /metrics\n");
    return reply(connection, MHD_HTTP_OK, static_cast<const MetricsServer*>(server)->text());
}

Expected<int> listenOn(const MetricsSettings& settings)
{
    return settings.socket.isEmpty() ? service::listenOnAddress(settings.address, settings.port)
                                     : service::listenOnPath(settings.socket);
}

} // namespace

Expected<std::unique_ptr<MetricsServer>> MetricsServer::start(const MetricsSettings& settings)
{
    const Expected<int> socket = listenOn(settings);
    if (!socket)
        return Error{QStringLiteral("metrics: %1").arg(socket.error().text)};
    std::unique_ptr<MetricsServer> server(new MetricsServer);
    server->m_path = settings.socket;
    if (settings.socket.isEmpty())
        server->m_port = service::listeningPort(*socket);
    server->m_daemon =
        ::MHD_start_daemon(MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_AUTO | MHD_USE_ITC, 0, nullptr,
                           nullptr, &answer, server.get(), MHD_OPTION_LISTEN_SOCKET, *socket,
                           MHD_OPTION_CONNECTION_LIMIT, static_cast<unsigned int>(kMostConnections),
                           MHD_OPTION_CONNECTION_TIMEOUT, static_cast<unsigned int>(kIdleTime),
                           MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, MHD_OPTION_END);
    if (server->m_daemon)
        return server;
    ::close(*socket);
    return Error{QStringLiteral("metrics: the server cannot be started")};
}

MetricsServer::~MetricsServer()
{
    if (!m_path.isEmpty())
        QFile::remove(m_path);
    if (m_daemon)
        ::MHD_stop_daemon(m_daemon); // closes the socket
}

void MetricsServer::setText(const QByteArray& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_text = text;
}

QByteArray MetricsServer::text() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_text;
}

} // namespace plc::gateway
