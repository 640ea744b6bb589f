#ifndef PLC_GATEWAY_OPERATION_METRICS_SERVER_H
#define PLC_GATEWAY_OPERATION_METRICS_SERVER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>
#include <mutex>

#include "gateway/config/settings.h"
#include "values/expected.h"

struct MHD_Daemon;

namespace plc::gateway {

/// Gives a text to whoever asks for /metrics by HTTP: on an address of this machine or on a socket
/// in the file system. It has a thread of its own, and few connections at a time, which end when
/// they are idle for some seconds.
class MetricsServer {
public:
    static constexpr int kMostConnections = 8;
    static constexpr int kIdleTime = 10; // s

    /// Port 0 of an address: any free one, see port().
    static Expected<std::unique_ptr<MetricsServer>> start(const MetricsSettings& settings);
    ~MetricsServer();
    MetricsServer(const MetricsServer&) = delete;
    MetricsServer& operator=(const MetricsServer&) = delete;

    /// What is given from now on; at first nothing. For any thread.
    void setText(const QByteArray& text);
    /// For any thread.
    QByteArray text() const;
    quint16 port() const { return m_port; }

private:
    MetricsServer() = default;

    mutable std::mutex m_mutex;
    QByteArray m_text; ///< Guarded by m_mutex.
    MHD_Daemon* m_daemon = nullptr;
    QString m_path; ///< Of the socket; empty: none.
    quint16 m_port = 0;
};

} // namespace plc::gateway

#endif
