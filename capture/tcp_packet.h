#ifndef PLC_CAPTURE_TCP_PACKET_H
#define PLC_CAPTURE_TCP_PACKET_H

#include <QtCore/QByteArray>
#include <QtNetwork/QHostAddress>

#include "values/export.h"

namespace plc::capture {

struct TcpEndpoint {
    QHostAddress address; ///< IPv4, also as it is mapped into IPv6, or IPv6.
    quint16 port = 0;
};

/// One packet between two endpoints.
struct TcpSegment {
    enum Flag : quint8 { Fin = 0x01, Syn = 0x02, Reset = 0x04, Push = 0x08, Acknowledge = 0x10 };

    TcpEndpoint source;
    TcpEndpoint destination;
    /// Stands in the Ethernet addresses, which are made up: 1 the client's, 2 the server's.
    quint8 sourceStation = 1;
    quint8 destinationStation = 2;
    /// Distinguishes the packets of one sender (IPv4 only).
    quint16 identification = 0;
    quint32 sequence = 0;
    quint32 acknowledgement = 0;
    quint8 flags = 0;
    QByteArray data;
};

/// Whether packets of the two go as IPv4; otherwise as IPv6.
PLC_HOST_EXPORT bool usesIPv4(const TcpEndpoint& one, const TcpEndpoint& other);

/// Data bytes that one Ethernet packet carries at most.
PLC_HOST_EXPORT int largestSegment(bool ipv4);

/// The packet from the Ethernet header on, with all lengths and checksums.
PLC_HOST_EXPORT QByteArray tcpPacket(const TcpSegment& segment);

} // namespace plc::capture

#endif
