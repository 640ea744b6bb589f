#ifndef PLC_GATEWAY_OPERATION_STATUS_SERVER_H
#define PLC_GATEWAY_OPERATION_STATUS_SERVER_H

#include <QtNetwork/QLocalServer>

#include <functional>
#include <memory>

#include "gateway/operation/statistics.h"
#include "values/expected.h"

namespace plc::gateway {

/// Tells how the gateway does to whoever connects to its socket, and hangs up. For owner and group
/// of the socket; serves in the event loop of the thread that started it.
class StatusServer {
public:
    static constexpr int kMostConnections = 8; ///< At a time; more wait.

    /// `document` is called for each that asks.
    static Expected<std::unique_ptr<StatusServer>> start(const QString& path,
                                                         std::function<QByteArray()> document);
    ~StatusServer();
    StatusServer(const StatusServer&) = delete;
    StatusServer& operator=(const StatusServer&) = delete;

private:
    StatusServer(const QString& path, std::function<QByteArray()> document);

    void serve();

    QString m_path;
    std::function<QByteArray()> m_document;
    QLocalServer m_server;
    int m_connections = 0;
};

/// Asks the gateway that listens on this socket. Waits for its answer for some seconds at most.
Expected<GatewayStatistics> readStatus(const QString& path);

} // namespace plc::gateway

#endif
