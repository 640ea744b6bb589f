#include "capture/tcp_conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QBuffer>
#include <QtCore/QtEndian>

#include <vector>

namespace plc::capture {
namespace {

using std::chrono::nanoseconds;
using ::testing::ElementsAre;

/// What the tests look at in one packet.
struct Packet {
    qint64 time;
    QByteArray direction; ///< "C" from the client, "S" from the server
    quint32 sequence;
    quint32 acknowledgement;
    int flags;
    QByteArray data;
    quint16 identification;
};

bool operator==(const Packet& one, const Packet& other)
{
    return one.time == other.time && one.direction == other.direction &&
           one.sequence == other.sequence && one.acknowledgement == other.acknowledgement &&
           one.flags == other.flags && one.data == other.data &&
           one.identification == other.identification;
}

void PrintTo(const Packet& packet, std::ostream* stream)
{
    *stream << packet.direction.constData() << " at " << packet.time << " sequence "
            << packet.sequence << " acknowledgement " << packet.acknowledgement << " flags "
            << packet.flags << " bytes " << packet.data.size() << " identification "
            << packet.identification;
}

constexpr int kFileHeadSize = 0x48;
constexpr int kBlockHeadSize = 28;
constexpr int kIPv4PartPosition = 14;
constexpr int kTcpPartPosition = 34;

template <typename Number>
Number littleEndianAt(const QByteArray& bytes, int position)
{
    return qFromLittleEndian<Number>(bytes.constData() + position);
}

template <typename Number>
Number bigEndianAt(const QByteArray& bytes, int position)
{
    return qFromBigEndian<Number>(bytes.constData() + position);
}

Packet readPacket(const QByteArray& block)
{
    const QByteArray packet = block.mid(kBlockHeadSize, int(littleEndianAt<quint32>(block, 20)));
    const int tcp = kTcpPartPosition;
    const int headerSize = (quint8(packet[tcp + 12]) >> 4) * 4;
    return {qint64(littleEndianAt<quint32>(block, 12)) << 32 | littleEndianAt<quint32>(block, 16),
            bigEndianAt<quint16>(packet, tcp) == 1200 ? "S" : "C",
            bigEndianAt<quint32>(packet, tcp + 4),
            bigEndianAt<quint32>(packet, tcp + 8),
            packet[tcp + 13],
            packet.mid(tcp + headerSize),
            bigEndianAt<quint16>(packet, kIPv4PartPosition + 4)};
}

class Conversation : public ::testing::Test {
protected:
    Conversation()
        : m_writer(open(&m_buffer), QStringLiteral("plc")),
          m_conversation(&m_writer, {QHostAddress(QStringLiteral("192.0.2.1")), 40000},
                         {QHostAddress(QStringLiteral("192.0.2.2")), 1200})
    {
    }

    static QIODevice* open(QBuffer* buffer)
    {
        buffer->open(QIODevice::WriteOnly);
        return buffer;
    }

    std::vector<Packet> packets() const
    {
        std::vector<Packet> result;
        const QByteArray& file = m_buffer.data();
        for (int position = kFileHeadSize; position < int(file.size());) {
            const int size = int(littleEndianAt<quint32>(file, position + 4));
            result.push_back(readPacket(file.mid(position, size)));
            position += size;
        }
        return result;
    }

    QBuffer m_buffer;
    PcapngWriter m_writer;
    TcpConversation m_conversation;
};

constexpr int kFin = 0x01;
constexpr int kSyn = 0x02;
constexpr int kReset = 0x04;
constexpr int kPush = 0x08;
constexpr int kAcknowledge = 0x10;

TEST_F(Conversation, OpensWithThreePackets)
{
    m_conversation.open(nanoseconds(7));

    EXPECT_THAT(packets(), ElementsAre(Packet{7, "C", 0, 0, kSyn, "", 1},
                                       Packet{7, "S", 0, 1, kSyn | kAcknowledge, "", 1},
                                       Packet{7, "C", 1, 1, kAcknowledge, "", 2}));
}

TEST_F(Conversation, CountsTheBytesOfBothSides)
{
    m_conversation.send(TcpConversation::Client, "request", nanoseconds(10));
    m_conversation.send(TcpConversation::Server, "reply", nanoseconds(4000000000));
    m_conversation.send(TcpConversation::Client, "next", nanoseconds(5000000000));

    EXPECT_THAT(packets(),
                ElementsAre(Packet{10, "C", 0, 0, kPush | kAcknowledge, "request", 1},
                            Packet{4000000000, "S", 0, 7, kPush | kAcknowledge, "reply", 1},
                            Packet{5000000000, "C", 7, 5, kPush | kAcknowledge, "next", 2}));
}

TEST_F(Conversation, CutsWhatDoesNotFitIntoOnePacket)
{
    const QByteArray bytes = QByteArray(1460, 'a') + QByteArray(1460, 'b') + "c";
    m_conversation.send(TcpConversation::Server, bytes, nanoseconds(1));

    EXPECT_THAT(packets(),
                ElementsAre(Packet{1, "S", 0, 0, kAcknowledge, QByteArray(1460, 'a'), 1},
                            Packet{1, "S", 1460, 0, kAcknowledge, QByteArray(1460, 'b'), 2},
                            Packet{1, "S", 2920, 0, kPush | kAcknowledge, "c", 3}));
}

TEST_F(Conversation, PushesTheLastOfSeveralFullPackets)
{
    m_conversation.send(TcpConversation::Client, QByteArray(2920, 'x'), nanoseconds(1));

    ASSERT_EQ(2u, packets().size());
    EXPECT_EQ(kAcknowledge, packets()[0].flags);
    EXPECT_EQ(kPush | kAcknowledge, packets()[1].flags);
}

TEST_F(Conversation, SendsNoPacketForNoBytes)
{
    m_conversation.send(TcpConversation::Client, QByteArray(), nanoseconds(1));

    EXPECT_TRUE(packets().empty());
}

TEST_F(Conversation, EndsWithBothSidesAgreeing)
{
    m_conversation.send(TcpConversation::Server, "bye", nanoseconds(1));
    m_conversation.close(TcpConversation::Server, nanoseconds(2));

    const std::vector<Packet> all = packets();
    ASSERT_EQ(4u, all.size());
    EXPECT_EQ(all[1], (Packet{2, "S", 3, 0, kFin | kAcknowledge, "", 2}));
    EXPECT_EQ(all[2], (Packet{2, "C", 0, 4, kFin | kAcknowledge, "", 1}));
    EXPECT_EQ(all[3], (Packet{2, "S", 4, 1, kAcknowledge, "", 3}));
}

TEST_F(Conversation, BreaksOffWithOnePacket)
{
    m_conversation.send(TcpConversation::Client, "request", nanoseconds(1));
    m_conversation.reset(TcpConversation::Client, nanoseconds(2));

    ASSERT_EQ(2u, packets().size());
    EXPECT_EQ(packets()[1], (Packet{2, "C", 7, 0, kReset | kAcknowledge, "", 2}));
}

} // namespace
} // namespace plc::capture
