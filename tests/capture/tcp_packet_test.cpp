#include "capture/tcp_packet.h"

#include <gtest/gtest.h>

namespace plc::capture {
namespace {

TcpEndpoint endpoint(const char* address, quint16 port)
{
    return TcpEndpoint{QHostAddress(QString::fromLatin1(address)), port};
}

TcpSegment segmentBetween(const TcpEndpoint& source, const TcpEndpoint& destination)
{
    TcpSegment segment;
    segment.source = source;
    segment.destination = destination;
    return segment;
}

TEST(TcpPacket, DataInIPv4)
{
    TcpSegment segment = segmentBetween(endpoint("192.0.2.1", 40000), endpoint("192.0.2.2", 1200));
    segment.identification = 2;
    segment.sequence = 1;
    segment.acknowledgement = 1;
    segment.flags = TcpSegment::Push | TcpSegment::Acknowledge;
    segment.data = QByteArray::fromHex("bbbb0000000200");

    // Odd length: the checksum counts a zero byte behind the last.
    EXPECT_EQ(
        "020000000002"
        "020000000001"
        "0800"
        "4500002f"
        "00024000"
        "4006b6c3"
        "c0000201"
        "c0000202"
        "9c4004b0"
        "00000001"
        "00000001"
        "5018ffff"
        "cf110000"
        "bbbb0000000200",
        tcpPacket(segment).toHex());
}

TEST(TcpPacket, OpeningAnnouncesSegmentSizeAndWindowScale)
{
    TcpSegment segment = segmentBetween(endpoint("192.0.2.1", 40000), endpoint("192.0.2.2", 1200));
    segment.identification = 1;
    segment.flags = TcpSegment::Syn;

    // 0x05b4 = 1460 = 1500 - 20 - 20
    EXPECT_EQ(
        "020000000002"
        "020000000001"
        "0800"
        "45000030"
        "00014000"
        "4006b6c3"
        "c0000201"
        "c0000202"
        "9c4004b0"
        "00000000"
        "00000000"
        "7002ffff"
        "5f240000"
        "020405b4"
        "01030307",
        tcpPacket(segment).toHex());
}

TEST(TcpPacket, DataInIPv6)
{
    TcpSegment segment =
        segmentBetween(endpoint("2001:db8::1", 40000), endpoint("2001:db8::2", 1200));
    segment.sequence = 1;
    segment.acknowledgement = 1;
    segment.flags = TcpSegment::Push | TcpSegment::Acknowledge;
    segment.data = QByteArray::fromHex("bbbb");

    EXPECT_EQ(
        "020000000002"
        "020000000001"
        "86dd"
        "60000000"
        "0016"
        "06"
        "40"
        "20010db8000000000000000000000001"
        "20010db8000000000000000000000002"
        "9c4004b0"
        "00000001"
        "00000001"
        "5018ffff"
        "f7a70000"
        "bbbb",
        tcpPacket(segment).toHex());
}

TEST(TcpPacket, IPv4AddressesWithinIPv6GoAsIPv4)
{
    const TcpSegment segment =
        segmentBetween(endpoint("::ffff:192.0.2.1", 40000), endpoint("192.0.2.2", 1200));

    EXPECT_EQ("0800", tcpPacket(segment).mid(12, 2).toHex());
    EXPECT_EQ("c0000201", tcpPacket(segment).mid(26, 4).toHex());
}

TEST(TcpPacket, LargestSegmentFillsAnEthernetPacket)
{
    for (const char* const address : {"192.0.2.1", "2001:db8::1"}) {
        TcpSegment segment = segmentBetween(endpoint(address, 1), endpoint(address, 2));
        segment.data =
            QByteArray(largestSegment(usesIPv4(segment.source, segment.destination)), 'x');

        EXPECT_EQ(14 + 1500, int(tcpPacket(segment).size())) << address;
    }
}

} // namespace
} // namespace plc::capture
