#include "host/tcp_link.h"

#include <QtNetwork/QNetworkProxy>

namespace plc {

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
            if (m_socket)
                m_socket->write(action.bytes);
            break;
        case SessionAction::Close:
            close();
            break;
    }
}

void TcpLink::open()
{
    close();
    m_socket = std::make_unique<QTcpSocket>();
    m_socket->setProxy(QNetworkProxy::NoProxy);
    connect(m_socket.get(), &QTcpSocket::connected, this, [this] {
        // Requests and replies are small and alternate; waiting to fill a segment only delays them.
        m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_session->connected(now());
        pump();
    });
    connect(m_socket.get(), &QTcpSocket::readyRead, this, [this] {
        m_session->received(m_socket->readAll(), now());
        pump();
    });
    connect(m_socket.get(), &QTcpSocket::errorOccurred, this, [this] {
        m_session->disconnected(m_socket->errorString(), now());
        pump();
    });
    m_socket->connectToHost(m_host, m_port);
}

void TcpLink::close()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    // It may be the one whose signal is being handled.
    m_socket.release()->deleteLater();
}

void TcpLink::armTimer()
{
    const qint64 deadline = m_session->nextDeadline();
    if (deadline < 0)
        m_timer.stop();
    else
        m_timer.start(int(qMax<qint64>(0, deadline - now())));
}

} // namespace plc
