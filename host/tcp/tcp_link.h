#ifndef PLC_HOST_TCP_TCP_LINK_H
#define PLC_HOST_TCP_TCP_LINK_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <memory>

#include "capture/link_capture.h"
#include "host/link/session.h"
#include "host/tcp/name_lookup.h"
#include "host/tcp/socket_end.h"
#include "values/export.h"

namespace plc::host {

/// Runs a session over TCP on the event loop of the thread it lives in.
class PLC_HOST_EXPORT TcpLink : public QObject {
    Q_OBJECT

public:
    TcpLink(Session* session, const QString& host, quint16 port);
    ~TcpLink() override;

    /// Keeps all connections from the next one on in `capture`, which must outlive the link.
    void keepIn(capture::LinkCapture* capture) { m_capture = capture; }
    void start();
    void stop();
    /// Milliseconds since some start, never going back: the time of all calls into the session.
    qint64 now() const { return m_clock.elapsed(); }
    /// To be called after calls into the session that this link did not make: carries out what the
    /// session wants.
    void pump();

    quint64 bytesSent() const { return m_bytesSent; }
    quint64 bytesReceived() const { return m_bytesReceived; }
    /// Why the socket says that the last connection failed; UnknownSocketError when it did not.
    QAbstractSocket::SocketError lastError() const { return m_lastError; }
    /// All bytes of the last connection that arrived since the last request was sent.
    const QByteArray& lastReceived() const { return m_lastReceived; }

private:
    void act(const SessionAction& action);
    void open();
    void takeAddresses(const NameAddresses& found);
    void connectToNext();
    void handleConnected();
    void handleError(QAbstractSocket::SocketError error, const QString& reason);
    void dropSocket();
    void send(const QByteArray& bytes);
    void receive();
    void close();
    void captureEnd();
    void armTimer();

    Session* const m_session;
    const QString m_host;
    const quint16 m_port;
    QElapsedTimer m_clock;
    QTimer m_timer;
    /// A new one for each connection, so that nothing of an earlier one is ever read.
    std::unique_ptr<NameLookup> m_lookup; ///< While it is under way.
    bool m_isWanted = false;              ///< A connection is, or is to be made.
    QVector<QHostAddress> m_addresses;    ///< Still to be tried.
    std::unique_ptr<QTcpSocket> m_socket;
    QAbstractSocket::SocketError m_lastError = QAbstractSocket::UnknownSocketError;
    QByteArray m_lastReceived;
    quint64 m_bytesSent = 0;
    quint64 m_bytesReceived = 0;
    capture::LinkCapture* m_capture = nullptr;
    std::unique_ptr<SocketEnd> m_end; ///< Of a connection that is captured.
};

} // namespace plc::host

#endif
