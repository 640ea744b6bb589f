#include "capture/tcp_packet.h"

#include <QtCore/QtEndian>

namespace plc::capture {
namespace {

constexpr int kEthernetPayload = 1500;
constexpr quint16 kIPv4EtherType = 0x0800;
constexpr quint16 kIPv6EtherType = 0x86dd;

constexpr int kIPv4HeaderSize = 20;
constexpr int kIPv6HeaderSize = 40;
constexpr int kIPv4ChecksumPosition = 10;
constexpr quint16 kIPv4VersionAndHeaderWords = 0x4500;
constexpr quint32 kIPv6Version = 0x60000000;
constexpr quint16 kDoNotFragment = 0x4000;
constexpr quint8 kHopLimit = 64;
constexpr quint8 kTcpProtocol = 6;

constexpr int kTcpHeaderSize = 20;
constexpr int kTcpChecksumPosition = 16;
constexpr quint16 kTcpWindow = 0xffff;
constexpr quint8 kSegmentSizeOption = 2;
constexpr quint8 kNoOperationOption = 1;
constexpr quint8 kWindowScaleOption = 3;
// The largest frame, 65541 bytes, fits several times into the window of 65535 * 2^7.
constexpr quint8 kWindowScale = 7;

template <typename Number>
void appendNumber(QByteArray* bytes, Number number)
{
    const Number bigEndian = qToBigEndian(number);
    bytes->append(reinterpret_cast<const char*>(&bigEndian), int(sizeof bigEndian));
}

void setChecksum(QByteArray* bytes, int position, quint16 checksum)
{
    qToBigEndian(checksum, bytes->data() + position);
}

/// The Internet checksum: the complement of the one's complement sum of all 16-bit words.
quint16 checksumOf(const QByteArray& bytes)
{
    quint32 sum = 0;
    for (int i = 0; i < int(bytes.size()); ++i)
        sum += quint32(quint8(bytes[i])) << (i % 2 == 0 ? 8 : 0);
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    return quint16(~sum);
}

QByteArray addressBytes(const QHostAddress& address, bool ipv4)
{
    QByteArray bytes;
    if (ipv4) {
        appendNumber(&bytes, quint32(address.toIPv4Address()));
    } else {
        const Q_IPV6ADDR parts = address.toIPv6Address();
        bytes.append(reinterpret_cast<const char*>(parts.c), int(sizeof parts.c));
    }
    return bytes;
}

QByteArray ethernetHeader(const TcpSegment& segment, bool ipv4)
{
    QByteArray header;
    for (const quint8 station : {segment.destinationStation, segment.sourceStation}) {
        header.append(QByteArray::fromHex("0200000000")); // locally administered
        header.append(char(station));
    }
    appendNumber(&header, ipv4 ? kIPv4EtherType : kIPv6EtherType);
    return header;
}

QByteArray ipv4Header(const TcpSegment& segment, const QByteArray& addresses, int payload)
{
    QByteArray header;
    appendNumber(&header, kIPv4VersionAndHeaderWords);
    appendNumber(&header, quint16(kIPv4HeaderSize + payload));
    appendNumber(&header, segment.identification);
    appendNumber(&header, kDoNotFragment);
    appendNumber(&header, kHopLimit);
    appendNumber(&header, kTcpProtocol);
    appendNumber(&header, quint16(0));
    header.append(addresses);
    setChecksum(&header, kIPv4ChecksumPosition, checksumOf(header));
    return header;
}

QByteArray ipv6Header(const QByteArray& addresses, int payload)
{
    QByteArray header;
    appendNumber(&header, kIPv6Version);
    appendNumber(&header, quint16(payload));
    appendNumber(&header, kTcpProtocol);
    appendNumber(&header, kHopLimit);
    header.append(addresses);
    return header;
}

QByteArray openingOptions(bool ipv4)
{
    QByteArray options;
    appendNumber(&options, kSegmentSizeOption);
    appendNumber(&options, quint8(4));
    appendNumber(&options, quint16(largestSegment(ipv4)));
    appendNumber(&options, kNoOperationOption);
    appendNumber(&options, kWindowScaleOption);
    appendNumber(&options, quint8(3));
    appendNumber(&options, kWindowScale);
    return options;
}

QByteArray tcpPart(const TcpSegment& segment, bool ipv4)
{
    const QByteArray options =
        (segment.flags & TcpSegment::Syn) != 0 ? openingOptions(ipv4) : QByteArray();
    const quint8 headerWords = quint8((kTcpHeaderSize + options.size()) / 4);
    QByteArray part;
    appendNumber(&part, segment.source.port);
    appendNumber(&part, segment.destination.port);
    appendNumber(&part, segment.sequence);
    appendNumber(&part, segment.acknowledgement);
    appendNumber(&part, quint8(headerWords << 4));
    appendNumber(&part, segment.flags);
    appendNumber(&part, kTcpWindow);
    appendNumber(&part, quint16(0)); // checksum
    appendNumber(&part, quint16(0)); // urgent pointer
    return part + options + segment.data;
}

/// The TCP checksum covers the addresses, the protocol and the length as well.
quint16 tcpChecksum(const QByteArray& addresses, const QByteArray& part)
{
    QByteArray covered = addresses;
    appendNumber(&covered, quint32(part.size()));
    appendNumber(&covered, quint32(kTcpProtocol));
    return checksumOf(covered + part);
}

} // namespace

bool usesIPv4(const TcpEndpoint& one, const TcpEndpoint& other)
{
    bool first = false;
    bool second = false;
    one.address.toIPv4Address(&first);
    other.address.toIPv4Address(&second);
    return first && second;
}

int largestSegment(bool ipv4)
{
    return kEthernetPayload - kTcpHeaderSize - (ipv4 ? kIPv4HeaderSize : kIPv6HeaderSize);
}

QByteArray tcpPacket(const TcpSegment& segment)
{
    const bool ipv4 = usesIPv4(segment.source, segment.destination);
    const QByteArray addresses = addressBytes(segment.source.address, ipv4) +
                                 addressBytes(segment.destination.address, ipv4);
    QByteArray part = tcpPart(segment, ipv4);
    setChecksum(&part, kTcpChecksumPosition, tcpChecksum(addresses, part));
    const int payload = int(part.size());
    const QByteArray header =
        ipv4 ? ipv4Header(segment, addresses, payload) : ipv6Header(addresses, payload);
    return ethernetHeader(segment, ipv4) + header + part;
}

} // namespace plc::capture
