#include "capture/tcp_conversation.h"

namespace plc::capture {
namespace {

constexpr quint8 kClientStation = 1;
constexpr quint8 kServerStation = 2;

TcpConversation::Side other(TcpConversation::Side side)
{
    return side == TcpConversation::Client ? TcpConversation::Server : TcpConversation::Client;
}

} // namespace

TcpConversation::TcpConversation(PcapngWriter* writer, const TcpEndpoint& client,
                                 const TcpEndpoint& server)
    : m_writer(writer), m_largestSegment(largestSegment(usesIPv4(client, server)))
{
    m_ends[Client].endpoint = client;
    m_ends[Client].station = kClientStation;
    m_ends[Server].endpoint = server;
    m_ends[Server].station = kServerStation;
}

void TcpConversation::open(std::chrono::nanoseconds sinceEpoch)
{
    write(Client, TcpSegment::Syn, QByteArray(), sinceEpoch);
    write(Server, TcpSegment::Syn | TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
    write(Client, TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
}

void TcpConversation::send(Side from, const QByteArray& bytes, std::chrono::nanoseconds sinceEpoch)
{
    for (int position = 0; position < int(bytes.size()); position += m_largestSegment) {
        const bool last = position + m_largestSegment >= int(bytes.size());
        write(from, TcpSegment::Acknowledge | (last ? TcpSegment::Push : 0),
              bytes.mid(position, m_largestSegment), sinceEpoch);
    }
}

void TcpConversation::close(Side from, std::chrono::nanoseconds sinceEpoch)
{
    write(from, TcpSegment::Fin | TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
    write(other(from), TcpSegment::Fin | TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
    write(from, TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
}

void TcpConversation::reset(Side from, std::chrono::nanoseconds sinceEpoch)
{
    write(from, TcpSegment::Reset | TcpSegment::Acknowledge, QByteArray(), sinceEpoch);
}

void TcpConversation::write(Side from, int flags, const QByteArray& data,
                            std::chrono::nanoseconds sinceEpoch)
{
    End& sender = m_ends[from];
    const End& receiver = m_ends[other(from)];
    TcpSegment segment;
    segment.source = sender.endpoint;
    segment.destination = receiver.endpoint;
    segment.sourceStation = sender.station;
    segment.destinationStation = receiver.station;
    segment.identification = ++sender.packets;
    segment.sequence = sender.sequence;
    segment.acknowledgement = (flags & TcpSegment::Acknowledge) != 0 ? receiver.sequence : 0;
    segment.flags = quint8(flags);
    segment.data = data;
    m_writer->writePacket(sinceEpoch, tcpPacket(segment));
    // The opening and the end of a stream count as one byte each.
    const bool counts = (flags & (TcpSegment::Syn | TcpSegment::Fin)) != 0;
    sender.sequence += quint32(data.size()) + (counts ? 1 : 0);
}

} // namespace plc::capture
