#include "capture/pcapng_writer.h"

#include <gtest/gtest.h>

#include <QtCore/QBuffer>

namespace plc::capture {
namespace {

using std::chrono::nanoseconds;

constexpr char kFileHead[] =
    // section: type, length, byte order, version 1.0, unknown length, "plc" as the application
    "0a0d0d0a"
    "28000000"
    "4d3c2b1a"
    "0100"
    "0000"
    "ffffffffffffffff"
    "0400"
    "0300"
    "706c6300"
    "0000"
    "0000"
    "28000000"
    // interface: type, length, Ethernet, reserved, no limit, times in 10^-9 s
    "01000000"
    "20000000"
    "0100"
    "0000"
    "00000000"
    "0900"
    "0100"
    "09000000"
    "0000"
    "0000"
    "20000000";

class PcapngFile : public ::testing::Test {
protected:
    PcapngFile() { m_buffer.open(QIODevice::WriteOnly); }

    QByteArray hex() const { return m_buffer.data().toHex(); }

    QBuffer m_buffer;
};

TEST_F(PcapngFile, BeginsWithSectionAndInterface)
{
    const PcapngWriter writer(&m_buffer, QStringLiteral("plc"));

    EXPECT_EQ(kFileHead, hex());
    EXPECT_EQ(QString(), writer.error());
}

TEST_F(PcapngFile, HoldsPacketWithItsTimePaddedToWords)
{
    PcapngWriter writer(&m_buffer, QStringLiteral("plc"));

    writer.writePacket(nanoseconds(0x0123456789abcdef), QByteArray::fromHex("a1a2a3a4a5"));

    EXPECT_EQ(hex(), QByteArray(kFileHead) +
                         // type, length, interface, time high and low, captured, on the wire
                         "06000000"
                         "28000000"
                         "00000000"
                         "67452301"
                         "efcdab89"
                         "05000000"
                         "05000000"
                         "a1a2a3a4a5000000"
                         "28000000");
}

TEST_F(PcapngFile, PadsNothingToWholeWords)
{
    PcapngWriter writer(&m_buffer, QStringLiteral("plc"));

    writer.writePacket(nanoseconds(1), QByteArray::fromHex("a1a2a3a4"));

    EXPECT_EQ(hex(), QByteArray(kFileHead) +
                         "06000000"
                         "24000000"
                         "00000000"
                         "00000000"
                         "01000000"
                         "04000000"
                         "04000000"
                         "a1a2a3a4"
                         "24000000");
}

/// Takes so many bytes and then fails, like a full disk.
class SmallDevice : public QIODevice {
public:
    explicit SmallDevice(qint64 room) : m_room(room) { open(QIODevice::WriteOnly); }

    qint64 taken() const { return m_taken; }
    void free(qint64 room) { m_room += room; }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override
    {
        const qint64 fits = qMin(size, m_room - m_taken);
        m_taken += fits;
        if (fits == size)
            return size;
        setErrorString(QStringLiteral("the disk is full"));
        return fits > 0 ? fits : -1;
    }

private:
    qint64 m_room;
    qint64 m_taken = 0;
};

constexpr qint64 kHeadSize = 0x28 + 0x20;

TEST(PcapngWriter, TellsWhyAPacketCouldNotBeWritten)
{
    SmallDevice device(kHeadSize + 10);
    PcapngWriter writer(&device, QStringLiteral("plc"));
    EXPECT_EQ(QString(), writer.error());

    writer.writePacket(nanoseconds(1), QByteArray(4, 'x'));

    EXPECT_EQ(QStringLiteral("the disk is full"), writer.error());
}

TEST(PcapngWriter, WritesNothingBehindADamagedPacket)
{
    SmallDevice device(kHeadSize + 10);
    PcapngWriter writer(&device, QStringLiteral("plc"));
    writer.writePacket(nanoseconds(1), QByteArray(4, 'x'));
    ASSERT_FALSE(writer.error().isEmpty());
    device.free(1000);

    writer.writePacket(nanoseconds(2), QByteArray(4, 'x'));

    EXPECT_EQ(kHeadSize + 10, device.taken());
}

} // namespace
} // namespace plc::capture
