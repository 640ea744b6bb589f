#ifndef PLC_PANEL_HTTP_SERVER_CORE_H
#define PLC_PANEL_HTTP_SERVER_CORE_H

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

#include "panel/http/connection_table.h"
#include "panel/http/guard.h"
#include "panel/http/lingering_sockets.h"
#include "panel/http/route_table.h"
#include "panel/http/server.h"
#include "panel/http/suspension.h"
#include "panel/http/tls_identity.h"

namespace plc::panel {

class Exchange;

/// One connection of a client.
struct Connection {
    ConnectionTable::Id id = 0;
    int socket = -1;
    QString address;
    bool isEncrypted = false;
    bool isSentTo = false; ///< The client may still be sending a body that is not read.
    std::shared_ptr<Suspension> suspension;
    std::weak_ptr<Exchange> exchange;    ///< The request under way.
    std::shared_ptr<EventStream> stream; ///< That is being sent; guarded by the core.
};

/// What all connections of a server share.
class ServerCore {
public:
    ServerCore(const ServerSettings& settings, RouteTable routes, Guard* guard);

    const ServerSettings& settings() const { return m_settings; }
    const RouteTable& routes() const { return m_routes; }
    Decision decide(const RequestHead& head);
    void handle(const Route& route, const Request& request, const Responder& responder);

    bool admit(const QString& address);
    void add(const std::shared_ptr<Connection>& connection);
    void remove(const Connection& connection);
    void enter(Connection* connection, Phase phase);
    void enterStreaming(Connection* connection, const std::shared_ptr<EventStream>& stream);
    /// So many bytes of the response are on their way.
    void sent(const Connection& connection, qint64 bytes);
    void setExchange(Connection* connection, const std::shared_ptr<Exchange>& exchange);
    /// Ends what takes too long. To be called now and then, by any thread.
    void endOverdue();
    /// Nothing rests any more, and nothing new will.
    void endAll();
    ServerStatistics statistics() const;

    LingeringSockets lingering;
    std::atomic<qint64> requests{0};
    std::atomic<qint64> refused{0};
    std::atomic<int> streams{0};
    std::atomic<qint64> bytesOfBodies{0}; ///< That requests under way have brought.
    TlsIdentities identities;             ///< Empty without TLS.

private:
    void limitEndedStreams();
    void shutDown(ConnectionTable::Id id);

    const ServerSettings m_settings;
    const RouteTable m_routes;
    Guard* const m_guard;
    std::mutex m_calls;         ///< Held while guard or handlers are called.
    mutable std::mutex m_mutex; ///< Guards all below.
    std::map<ConnectionTable::Id, std::shared_ptr<Connection>> m_connections;
    ConnectionTable m_table;
    bool m_isEnding = false;
};

} // namespace plc::panel

#endif
