#include "panel/http/server_core.h"

#include <sys/socket.h>

#include <utility>

#include "panel/http/exchange.h"
#include "values/steady_time.h"

namespace plc::panel {
namespace {

ConnectionLimits limitsOf(const ServerSettings& settings)
{
    return {settings.mostConnections, settings.mostConnectionsOfAddress,
            settings.idleTime,        settings.requestTime,
            settings.answerTime,      settings.sendTime,
            settings.sendBytes};
}

} // namespace

ServerCore::ServerCore(const ServerSettings& settings, RouteTable routes, Guard* guard)
    : m_settings(settings),
      m_routes(std::move(routes)),
      m_guard(guard),
      m_table(limitsOf(settings), [this](ConnectionTable::Id id) { shutDown(id); })
{
}

Decision ServerCore::decide(const RequestHead& head)
{
    const std::lock_guard<std::mutex> lock(m_calls);
    return m_guard->decide(head);
}

void ServerCore::handle(const Route& route, const Request& request, const Responder& responder)
{
    const std::lock_guard<std::mutex> lock(m_calls);
    route.handler(request, responder);
}

bool ServerCore::admit(const QString& address)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_table.admit(address);
}

void ServerCore::add(const std::shared_ptr<Connection>& connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    connection->id = m_table.add(connection->address, values::steadyTime());
    m_connections[connection->id] = connection;
    if (m_isEnding)
        connection->suspension->end();
}

void ServerCore::remove(const Connection& connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_table.remove(connection.id);
    m_connections.erase(connection.id);
}

void ServerCore::enter(Connection* connection, Phase phase)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    connection->stream.reset();
    m_table.enter(connection->id, phase, values::steadyTime());
}

void ServerCore::enterStreaming(Connection* connection, const std::shared_ptr<EventStream>& stream)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    connection->stream = stream;
    m_table.enter(connection->id, Phase::Streaming, values::steadyTime());
}

void ServerCore::sent(const Connection& connection, qint64 bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_table.sent(connection.id, bytes, values::steadyTime());
}

void ServerCore::setExchange(Connection* connection, const std::shared_ptr<Exchange>& exchange)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    connection->exchange = exchange;
}

void ServerCore::endOverdue()
{
    lingering.drain(values::steadyTime());
    std::vector<std::shared_ptr<Exchange>> unanswered;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        limitEndedStreams();
        for (const ConnectionTable::Id id : m_table.endOverdue(values::steadyTime()))
            unanswered.push_back(m_connections[id]->exchange.lock());
    }
    for (const std::shared_ptr<Exchange>& exchange : unanswered) {
        if (exchange)
            exchange->give(Response::error(503, QStringLiteral("there was no answer in time")));
    }
}

void ServerCore::endAll()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isEnding = true;
    for (const auto& [id, connection] : m_connections)
        connection->suspension->end();
}

ServerStatistics ServerCore::statistics() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ServerStatistics statistics;
    statistics.connections = m_table.size();
    statistics.streams = streams;
    statistics.requests = requests;
    statistics.refused = refused;
    statistics.cutOff = m_table.ended();
    return statistics;
}

/// A client that does not read is never asked for its stream again, so that it would not be seen
/// there that the stream has ended: what is left of it has to be read in the time of a response.
void ServerCore::limitEndedStreams()
{
    for (const auto& [id, connection] : m_connections) {
        if (!connection->stream || connection->stream->isOpen())
            continue;
        connection->stream.reset();
        m_table.enter(id, Phase::Sending, values::steadyTime());
    }
}

/// The socket is open as long as the connection is in the table.
void ServerCore::shutDown(ConnectionTable::Id id)
{
    ::shutdown(m_connections[id]->socket, SHUT_RDWR);
}

} // namespace plc::panel
