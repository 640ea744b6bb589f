#ifndef PLC_SIMULATOR_PLC_CONNECTION_H
#define PLC_SIMULATOR_PLC_CONNECTION_H

#include <QtCore/QObject>
#include <QtNetwork/QTcpSocket>

#include <functional>

#include "simulator/frame_parser.h"
#include "simulator/plc_services.h"
#include "simulator/reply_faults.h"

namespace plc::simulator {

/// What all connections of a server share.
struct ConnectionSettings {
    PlcServices* services = nullptr;
    ReplyFaults* faults = nullptr;
    int fragment = 0;  ///< Bytes of one piece of a reply; 0: replies go out whole.
    bool join = false; ///< Replies to requests that arrived together go out in one piece.
    std::function<void()> beforeAccess; ///< Brings the memory up to the present time.
    /// Told every frame: the peer, '>' for a request or '<' for a reply, the bytes.
    std::function<void(const QString&, char, const QByteArray&)> trace;
    qint64 requests = 0;
    qint64 refused = 0; ///< Requests answered with another status than good.

    void prepareMemory() const
    {
        if (beforeAccess)
            beforeAccess();
    }
};

/// One client. Requests are served one after the other: the next one waits until the reply before
/// it is on its way, so that what waits is bounded.
class PlcConnection : public QObject {
public:
    /// Takes the socket. Deletes itself when the client has gone.
    PlcConnection(QTcpSocket* socket, const Session& session, ConnectionSettings* settings,
                  QObject* parent);

    void close() { m_socket->abort(); }

    /// Bytes of requests and replies that wait here for the client or because of it.
    qint64 keptBytes() const;

private:
    void receive();
    bool serveNext();
    bool hasRoomFor(const ReplyDelivery& joined) const;
    ReplyDelivery answer(const QByteArray& request);
    void refuseStream(FrameParser::Outcome outcome);
    void deliver(const ReplyDelivery& delivery);
    void sendPiece();
    void sendPieceAfter(int milliseconds);

    QTcpSocket* m_socket;
    QString m_peer;
    Session m_session;
    ConnectionSettings* m_settings;
    FrameParser m_parser;
    QByteArray m_unsent;
    bool m_sending = false; ///< A reply waits for its delay or for its next piece.
    bool m_silent = false;
};

} // namespace plc::simulator

#endif
