#include "simulator/plc_connection.h"

#include <QtCore/QTimer>
#include <QtNetwork/QHostAddress>

namespace plc::simulator {
namespace {

/// Of the socket, and as much again of the parser.
constexpr int kReceiveBufferSize = 128 * 1024;
/// What waits for a client that does not read: it is served only while its longest reply, sent
/// twice, still fits in.
constexpr qint64 kMostUnsentBytes = qint64(896) * 1024;
constexpr qint64 kLongestDelivery = 2 * (kFrameHeaderSize + qint64(kLargestPayload));
constexpr int kMostJoinedReplies = 16;
constexpr int kPauseBetweenPieces = 1; // ms

} // namespace

PlcConnection::PlcConnection(QTcpSocket* socket, const Session& session,
                             ConnectionSettings* settings, QObject* parent)
    : QObject(parent),
      m_socket(socket),
      m_peer(QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort())),
      m_session(session),
      m_settings(settings)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(kReceiveBufferSize);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, [this] { receive(); });
    // Queued: a flush tells of written bytes in the middle of serving a request.
    connect(
        m_socket, &QTcpSocket::bytesWritten, this, [this] { receive(); }, Qt::QueuedConnection);
    connect(m_socket, &QTcpSocket::disconnected, this, [this] { deleteLater(); });
}

void PlcConnection::receive()
{
    if (m_silent) {
        m_socket->readAll();
        return;
    }
    do {
        if (m_parser.bufferedBytes() < kReceiveBufferSize)
            m_parser.append(m_socket->read(kReceiveBufferSize - m_parser.bufferedBytes()));
    } while (serveNext());
}

/// Serves what can be served now; returns whether more may follow at once.
bool PlcConnection::serveNext()
{
    ReplyDelivery joined;
    if (m_sending || m_silent || m_socket->state() != QAbstractSocket::ConnectedState ||
        !hasRoomFor(joined))
        return false;
    int served = 0;
    QByteArray request;
    FrameParser::Outcome outcome = FrameParser::Outcome::Complete;
    while (served < (m_settings->join ? kMostJoinedReplies : 1) && !joined.silence &&
           hasRoomFor(joined)) {
        outcome = m_parser.take(&request);
        if (outcome != FrameParser::Outcome::Complete)
            break;
        const ReplyDelivery next = answer(request);
        joined.bytes += next.bytes;
        joined.delay = qMax(joined.delay, next.delay);
        joined.silence = next.silence;
        ++served;
    }
    if (served > 0)
        deliver(joined);
    else if (outcome != FrameParser::Outcome::NeedMore)
        refuseStream(outcome);
    return served > 0;
}

/// Whether one more reply may wait behind those that are `joined` already.
bool PlcConnection::hasRoomFor(const ReplyDelivery& joined) const
{
    return m_socket->bytesToWrite() + joined.bytes.size() + kLongestDelivery <= kMostUnsentBytes;
}

qint64 PlcConnection::keptBytes() const
{
    return m_parser.bufferedBytes() + m_socket->bytesAvailable() + m_unsent.size() +
           m_socket->bytesToWrite();
}

ReplyDelivery PlcConnection::answer(const QByteArray& request)
{
    ++m_settings->requests;
    if (m_settings->trace)
        m_settings->trace(m_peer, '>', request);
    m_settings->prepareMemory();
    const QByteArray reply = m_settings->services->reply(request, &m_session);
    if (replyStatus(reply) != Status::Good)
        ++m_settings->refused;
    const Service service = Service(quint8(request[kServicePosition]));
    const bool isData = service == Service::ReadVariables || service == Service::WriteVariables;
    ReplyDelivery delivery =
        isData ? m_settings->faults->dataReply(reply) : m_settings->faults->loginReply(reply);
    if (m_settings->trace)
        m_settings->trace(m_peer, '<', delivery.bytes);
    return delivery;
}

void PlcConnection::refuseStream(FrameParser::Outcome outcome)
{
    m_silent = true;
    if (outcome == FrameParser::Outcome::BadLength)
        m_socket->write(PlcServices::statusReply(Status::BadLength));
    m_socket->disconnectFromHost();
}

void PlcConnection::deliver(const ReplyDelivery& delivery)
{
    m_silent = delivery.silence;
    if (delivery.bytes.isEmpty())
        return;
    m_sending = true;
    m_unsent = delivery.bytes;
    if (delivery.delay > 0)
        sendPieceAfter(delivery.delay);
    else
        sendPiece();
}

void PlcConnection::sendPieceAfter(int milliseconds)
{
    QTimer::singleShot(milliseconds, this, [this] {
        sendPiece();
        receive();
    });
}

void PlcConnection::sendPiece()
{
    const int fragment = m_settings->fragment;
    QByteArray piece;
    if (fragment > 0 && fragment < int(m_unsent.size())) {
        piece = m_unsent.left(fragment);
        m_unsent.remove(0, fragment);
    } else {
        // Handed on without a second copy of what may be long.
        piece.swap(m_unsent);
    }
    m_sending = !m_unsent.isEmpty();
    m_socket->write(piece);
    m_socket->flush();
    if (m_sending)
        sendPieceAfter(kPauseBetweenPieces);
}

} // namespace plc::simulator
