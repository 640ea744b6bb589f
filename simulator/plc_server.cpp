#include "simulator/plc_server.h"

#include <QtCore/QTimer>

namespace plc::simulator {
namespace {

constexpr int kPauseAfterFailedAccept = 100; // ms

} // namespace

PlcServer::PlcServer(ConnectionSettings* settings, QObject* parent)
    : QObject(parent), m_settings(settings)
{
    connect(&m_listener, &QTcpServer::newConnection, this, [this] { accept(); });
    // Out of file descriptors for example: Qt listens no more until it is told to.
    connect(&m_listener, &QTcpServer::acceptError, this, [this] {
        QTimer::singleShot(kPauseAfterFailedAccept, &m_listener,
                           [this] { m_listener.resumeAccepting(); });
    });
}

PlcServer::~PlcServer()
{
    goOffline();
}

Expected<void> PlcServer::listen(const QHostAddress& address, quint16 port)
{
    if (!m_listener.listen(address, port)) {
        return Error{QStringLiteral("cannot listen on %1:%2: %3")
                         .arg(address.toString())
                         .arg(port)
                         .arg(m_listener.errorString())};
    }
    m_address = m_listener.serverAddress();
    m_port = m_listener.serverPort();
    return {};
}

void PlcServer::goOffline()
{
    m_listener.close();
    disconnectClients();
}

Expected<void> PlcServer::goOnline()
{
    return isOnline() ? Expected<void>() : listen(m_address, m_port);
}

void PlcServer::disconnectClients()
{
    const QSet<PlcConnection*> connections = m_connections;
    for (PlcConnection* connection : connections)
        connection->close();
}

qint64 PlcServer::keptBytes() const
{
    qint64 bytes = 0;
    for (const PlcConnection* connection : m_connections)
        bytes += connection->keptBytes();
    return bytes;
}

void PlcServer::accept()
{
    while (QTcpSocket* socket = m_listener.nextPendingConnection()) {
        if (clients() >= m_mostClients) {
            turnAway(socket);
            continue;
        }
        auto* connection = new PlcConnection(socket, newSession(), m_settings, this);
        m_connections.insert(connection);
        connect(socket, &QTcpSocket::disconnected, this, [this, connection] {
            m_connections.remove(connection);
            m_isFullTold = false;
        });
    }
}

void PlcServer::turnAway(QTcpSocket* socket)
{
    if (m_notice && !m_isFullTold) {
        m_notice(QStringLiteral("clients are turned away: %1 are connected; --max-clients allows "
                                "more")
                     .arg(clients()));
    }
    m_isFullTold = true;
    socket->abort();
    socket->deleteLater();
}

/// Each session has bytes of its own, and the two differ: requests that carry those of an earlier
/// connection, or carry them the wrong way round, are refused.
Session PlcServer::newSession()
{
    constexpr quint32 kValues = 251;
    ++m_sessions;
    Session session;
    session.infoByte24 = quint8(1 + m_sessions % kValues);
    session.infoByte25 =
        quint8(1 + (m_sessions + 1 + m_sessions / kValues % (kValues - 1)) % kValues);
    return session;
}

} // namespace plc::simulator
