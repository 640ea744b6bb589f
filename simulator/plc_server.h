#ifndef PLC_SIMULATOR_PLC_SERVER_H
#define PLC_SIMULATOR_PLC_SERVER_H

#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpServer>

#include <functional>

#include "simulator/plc_connection.h"
#include "values/expected.h"

namespace plc::simulator {

/// Listens for clients and serves each in a PlcConnection.
class PlcServer : public QObject {
public:
    /// What `settings` points to must outlive the server.
    explicit PlcServer(ConnectionSettings* settings, QObject* parent = nullptr);
    ~PlcServer() override;

    /// Clients beyond this number are turned away.
    void setMostClients(int count) { m_mostClients = count; }
    /// Told once that clients are turned away, and again when there was room in between.
    void setNotice(std::function<void(const QString&)> notice) { m_notice = std::move(notice); }

    /// Begins to listen; port 0 picks a free one. Returns false and sets `error` if it cannot.
    Expected<void> listen(const QHostAddress& address, quint16 port);
    QHostAddress address() const { return m_address; }
    quint16 port() const { return m_port; }

    /// Breaks all connections and listens no more, as a PLC that is switched off.
    void goOffline();
    /// Listens again where it did before.
    Expected<void> goOnline();
    bool isOnline() const { return m_listener.isListening(); }

    /// Breaks all connections.
    void disconnectClients();
    int clients() const { return int(m_connections.size()); }
    /// Bytes that wait for all clients or because of them.
    qint64 keptBytes() const;

private:
    void accept();
    void turnAway(QTcpSocket* socket);
    Session newSession();

    ConnectionSettings* m_settings;
    QTcpServer m_listener;
    QHostAddress m_address;
    quint16 m_port = 0;
    int m_mostClients = 256;
    std::function<void(const QString&)> m_notice;
    bool m_isFullTold = false;
    quint32 m_sessions = 0;
    QSet<PlcConnection*> m_connections;
};

} // namespace plc::simulator

#endif
