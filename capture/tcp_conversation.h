#ifndef PLC_CAPTURE_TCP_CONVERSATION_H
#define PLC_CAPTURE_TCP_CONVERSATION_H

#include <QtCore/QByteArray>

#include <chrono>

#include "capture/pcapng_writer.h"
#include "capture/tcp_packet.h"
#include "values/export.h"

namespace plc::capture {

/// One TCP connection, written as the packets that carry what its two ends say.
///
/// A program sees the bytes of its connection, not the packets. The packets are made up so that
/// the bytes, their order and their times are right: in sequence, nothing lost or repeated.
class PLC_HOST_EXPORT TcpConversation {
public:
    enum Side { Client, Server };

    /// `writer` outlives the conversation.
    TcpConversation(PcapngWriter* writer, const TcpEndpoint& client, const TcpEndpoint& server);

    /// The client connects.
    void open(std::chrono::nanoseconds sinceEpoch);
    /// `from` sends bytes: one packet, or as many as they need.
    void send(Side from, const QByteArray& bytes, std::chrono::nanoseconds sinceEpoch);
    /// `from` closes the connection, the other agrees.
    void close(Side from, std::chrono::nanoseconds sinceEpoch);
    /// `from` breaks the connection off.
    void reset(Side from, std::chrono::nanoseconds sinceEpoch);

private:
    struct End {
        TcpEndpoint endpoint;
        quint8 station = 0;
        quint16 packets = 0;
        quint32 sequence = 0; ///< Of the next byte; modulo 2^32.
    };

    void write(Side from, int flags, const QByteArray& data, std::chrono::nanoseconds sinceEpoch);

    PcapngWriter* m_writer;
    End m_ends[2];
    int m_largestSegment;
};

} // namespace plc::capture

#endif
