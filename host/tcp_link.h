#ifndef PLC_HOST_TCP_LINK_H
#define PLC_HOST_TCP_LINK_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <memory>

#include "host/session.h"

namespace plc {

/// Runs a session over TCP on the event loop of the thread it lives in.
class TcpLink : public QObject {
    Q_OBJECT

public:
    TcpLink(Session* session, const QString& host, quint16 port);
    ~TcpLink() override;

    void start();
    void stop();
    /// Milliseconds since some start, never going back: the time of all calls into the session.
    qint64 now() const { return m_clock.elapsed(); }
    /// To be called after calls into the session that this link did not make: carries out what the
    /// session wants.
    void pump();

private:
    void act(const SessionAction& action);
    void open();
    void close();
    void armTimer();

    Session* const m_session;
    const QString m_host;
    const quint16 m_port;
    QElapsedTimer m_clock;
    QTimer m_timer;
    /// A new one for each connection, so that nothing of an earlier one is ever read.
    std::unique_ptr<QTcpSocket> m_socket;
};

} // namespace plc

#endif
