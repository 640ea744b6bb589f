#ifndef PLC_TESTS_FAULTS_STAMPED_SERVER_H
#define PLC_TESTS_FAULTS_STAMPED_SERVER_H

#include <QtCore/QDateTime>
#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include "faults/frames.h"
#include "faults/stamped_plc.h"

namespace plc::faults {

/// A stamped PLC on a port of this machine, for one host at a time. The times of its record are
/// milliseconds since 1970 at which requests arrived, and so no earlier than they were sent.
class StampedServer : public QObject {
public:
    /// `turnaround`: milliseconds from a request to its reply.
    StampedServer(StampedPlc* plc, int turnaround) : m_plc(plc), m_turnaround(turnaround)
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] { accept(); });
        m_server.listen(QHostAddress(QHostAddress::LocalHost));
    }

    quint16 port() const { return m_server.serverPort(); }

private:
    void accept()
    {
        QTcpSocket* const socket = m_server.nextPendingConnection();
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_plc->openConnection();
        m_requests.clear();
        m_socket = socket;
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { receive(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    void receive(QTcpSocket* socket)
    {
        if (socket != m_socket)
            return;
        m_requests += socket->readAll();
        for (;;) {
            const QByteArray request = takeFrame(&m_requests);
            if (request.isEmpty())
                return;
            const QByteArray reply = m_plc->answer(request, QDateTime::currentMSecsSinceEpoch());
            QTimer::singleShot(m_turnaround, socket, [socket, reply] {
                socket->write(reply);
                socket->flush();
            });
        }
    }

    StampedPlc* const m_plc;
    const int m_turnaround;
    QTcpServer m_server;
    QTcpSocket* m_socket = nullptr; ///< Of the present connection; only compared.
    QByteArray m_requests;
};

} // namespace plc::faults

#endif
