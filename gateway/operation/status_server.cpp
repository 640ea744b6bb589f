#include "gateway/operation/status_server.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QTimer>
#include <QtNetwork/QLocalSocket>

#include "gateway/operation/status_document.h"
#include "service/listening_socket.h"

namespace plc::gateway {
namespace {

constexpr int kPatience = 5000;                   // ms
constexpr int kLargestDocument = 4 * 1024 * 1024; // bytes

} // namespace

StatusServer::StatusServer(const QString& path, std::function<QByteArray()> document)
    : m_path(path), m_document(std::move(document))
{
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { serve(); });
}

StatusServer::~StatusServer()
{
    QFile::remove(m_path);
}

Expected<std::unique_ptr<StatusServer>> StatusServer::start(const QString& path,
                                                            std::function<QByteArray()> document)
{
    const Expected<int> socket = service::listenOnPath(path);
    if (!socket)
        return Error{QStringLiteral("status: %1").arg(socket.error().text)};
    std::unique_ptr<StatusServer> server(new StatusServer(path, std::move(document)));
    if (!server->m_server.listen(qintptr(*socket)))
        return Error{QStringLiteral("status: %1: %2").arg(path, server->m_server.errorString())};
    return server;
}

void StatusServer::serve()
{
    while (m_connections < kMostConnections && m_server.hasPendingConnections()) {
        QLocalSocket* const socket = m_server.nextPendingConnection();
        ++m_connections;
        QObject::connect(socket, &QObject::destroyed, &m_server, [this] {
            --m_connections;
            serve();
        });
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        // Who does not take the answer does not keep others from theirs.
        QTimer::singleShot(kPatience, socket, [socket] { socket->abort(); });
        socket->write(m_document());
        socket->disconnectFromServer();
    }
}

Expected<GatewayStatistics> readStatus(const QString& path)
{
    const auto failure = [&path](const QString& reason) {
        return Error{QStringLiteral("%1: %2").arg(path, reason)};
    };
    QLocalSocket socket;
    // Qt looks for names without a folder at the root in a folder of its own.
    socket.connectToServer(QFileInfo(path).absoluteFilePath(), QIODevice::ReadOnly);
    if (!socket.waitForConnected(kPatience))
        return failure(QStringLiteral("no gateway answers there (%1)").arg(socket.errorString()));
    QElapsedTimer timer;
    timer.start();
    QByteArray document = socket.readAll();
    while (socket.state() != QLocalSocket::UnconnectedState && timer.elapsed() < kPatience &&
           document.size() < kLargestDocument) {
        socket.waitForReadyRead(kPatience - int(timer.elapsed()));
        document += socket.readAll();
    }
    Expected<GatewayStatistics> statistics = parseStatus(document);
    if (!statistics)
        return failure(statistics.error().text);
    return statistics;
}

} // namespace plc::gateway
