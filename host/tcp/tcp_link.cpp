#include "host/tcp/tcp_link.h"

#include <QtNetwork/QNetworkProxy>

namespace plc::host {

TcpLink::TcpLink(Session* session, const QString& host, quint16 port)
    : m_session(session), m_host(host), m_port(port)
{
    m_clock.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_session->tick(now());
        pump();
    });
}

TcpLink::~TcpLink()
{
    close();
}

void TcpLink::start()
{
    m_session->start(now());
    pump();
}

void TcpLink::stop()
{
    m_session->stop();
    pump();
}

void TcpLink::pump()
{
    const QVector<SessionAction> actions = m_session->takeActions();
    for (const SessionAction& action : actions)
        act(action);
    armTimer();
}

void TcpLink::act(const SessionAction& action)
{
    switch (action.kind) {
        case SessionAction::Connect:
            open();
            break;
        case SessionAction::Send:
            send(action.bytes);
            break;
        case SessionAction::Close:
            close();
            break;
    }
}

void TcpLink::open()
{
    close();
    m_isWanted = true;
    m_lastError = QAbstractSocket::UnknownSocketError;
    m_lastReceived.clear();
    m_addresses.clear();
    const QHostAddress address(m_host);
    if (!address.isNull()) {
        m_addresses.append(address);
        connectToNext();
    } else if (!m_lookup) { // One that an earlier attempt began may still be under way.
        m_lookup = std::make_unique<NameLookup>(
            m_host, [this](const NameAddresses& found) { takeAddresses(found); });
    }
}

void TcpLink::takeAddresses(const NameAddresses& found)
{
    m_lookup.reset();
    if (!m_isWanted)
        return;
    m_addresses = found.addresses;
    if (!m_addresses.isEmpty())
        connectToNext();
    else
        handleError(QAbstractSocket::HostNotFoundError, found.error);
}

void TcpLink::connectToNext()
{
    dropSocket();
    m_socket = std::make_unique<QTcpSocket>();
    m_socket->setProxy(QNetworkProxy::NoProxy);
    connect(m_socket.get(), &QTcpSocket::connected, this, &TcpLink::handleConnected);
    connect(m_socket.get(), &QTcpSocket::readyRead, this, &TcpLink::receive);
    connect(m_socket.get(), &QTcpSocket::errorOccurred, this,
            [this] { handleError(m_socket->error(), m_socket->errorString()); });
    m_socket->connectToHost(m_addresses.takeFirst(), m_port);
}

void TcpLink::handleError(QAbstractSocket::SocketError error, const QString& reason)
{
    m_lastError = error;
    if (!m_addresses.isEmpty()) { // Of a name that stands for several; emptied when one answers.
        connectToNext();
        return;
    }
    m_session->disconnected(reason, now());
    pump();
}

void TcpLink::handleConnected()
{
    m_addresses.clear();
    m_lastError = QAbstractSocket::UnknownSocketError;
    // Requests and replies are small and alternate; waiting to fill a segment only delays them.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    if (m_capture) {
        m_capture->connected({m_socket->localAddress(), m_socket->localPort()},
                             {m_socket->peerAddress(), m_socket->peerPort()});
        m_end = std::make_unique<SocketEnd>(m_socket->socketDescriptor());
    }
    m_session->connected(now());
    pump();
}

void TcpLink::send(const QByteArray& bytes)
{
    if (!m_socket)
        return;
    m_lastReceived.clear();
    m_socket->write(bytes);
    m_bytesSent += quint64(bytes.size());
    if (m_capture)
        m_capture->sent(capture::TcpConversation::Client, bytes);
}

void TcpLink::receive()
{
    const QByteArray bytes = m_socket->readAll();
    m_lastReceived += bytes;
    m_bytesReceived += quint64(bytes.size());
    if (m_capture)
        m_capture->sent(capture::TcpConversation::Server, bytes);
    m_session->received(bytes, now());
    pump();
}

void TcpLink::close()
{
    m_isWanted = false;
    if (m_socket && m_end)
        captureEnd();
    dropSocket();
    m_end.reset();
}

void TcpLink::dropSocket()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    // It may be the one whose signal is being handled.
    m_socket.release()->deleteLater();
}

void TcpLink::captureEnd()
{
    if (m_end->isResetByPeer()) {
        // The system also gives up a connection whose other end no longer answers.
        if (m_lastError == QAbstractSocket::SocketTimeoutError)
            m_capture->abandoned();
        else
            m_capture->reset(capture::TcpConversation::Server);
    } else if (m_end->hasUnreadBytes()) {
        m_capture->reset(capture::TcpConversation::Client);
    } else {
        m_capture->closed(m_end->isClosedByPeer() ? capture::TcpConversation::Server
                                                  : capture::TcpConversation::Client);
    }
}

void TcpLink::armTimer()
{
    const qint64 deadline = m_session->nextDeadline();
    if (deadline < 0)
        m_timer.stop();
    else
        m_timer.start(int(qMax<qint64>(0, deadline - now())));
}

} // namespace plc::host
