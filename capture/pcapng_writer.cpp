#include "capture/pcapng_writer.h"

#include <QtCore/QFileDevice>
#include <QtCore/QtEndian>

namespace plc::capture {
namespace {

constexpr quint32 kSectionHeaderBlock = 0x0a0d0d0a;
constexpr quint32 kInterfaceBlock = 1;
constexpr quint32 kEnhancedPacketBlock = 6;

// Readers tell the byte order of the file from this number.
constexpr quint32 kByteOrderMagic = 0x1a2b3c4d;
constexpr quint16 kMajorVersion = 1;
constexpr quint16 kMinorVersion = 0;
constexpr quint64 kUnknownSectionLength = ~quint64(0);

constexpr quint16 kEthernetLinkType = 1;
constexpr quint32 kNoPacketLimit = 0;

constexpr quint16 kEndOfOptions = 0;
constexpr quint16 kApplicationOption = 4;
constexpr quint16 kTimeResolutionOption = 9;
constexpr char kNanoseconds = 9; // 10^-9 s

/// Type, and the total length before and after the body.
constexpr int kBlockFrameSize = 12;

template <typename Number>
void appendLittleEndian(QByteArray* bytes, Number number)
{
    const Number littleEndian = qToLittleEndian(number);
    bytes->append(reinterpret_cast<const char*>(&littleEndian), int(sizeof littleEndian));
}

void padToWords(QByteArray* bytes)
{
    while (bytes->size() % 4 != 0)
        bytes->append('\0');
}

void appendOption(QByteArray* bytes, quint16 code, const QByteArray& value)
{
    appendLittleEndian(bytes, code);
    appendLittleEndian(bytes, quint16(value.size()));
    bytes->append(value);
    padToWords(bytes);
}

QByteArray sectionHeader(const QString& application)
{
    QByteArray body;
    appendLittleEndian(&body, kByteOrderMagic);
    appendLittleEndian(&body, kMajorVersion);
    appendLittleEndian(&body, kMinorVersion);
    appendLittleEndian(&body, kUnknownSectionLength);
    appendOption(&body, kApplicationOption, application.toUtf8());
    appendOption(&body, kEndOfOptions, QByteArray());
    return body;
}

QByteArray ethernetInterface()
{
    QByteArray body;
    appendLittleEndian(&body, kEthernetLinkType);
    appendLittleEndian(&body, quint16(0));
    appendLittleEndian(&body, kNoPacketLimit);
    appendOption(&body, kTimeResolutionOption, QByteArray(1, kNanoseconds));
    appendOption(&body, kEndOfOptions, QByteArray());
    return body;
}

} // namespace

PcapngWriter::PcapngWriter(QIODevice* device, const QString& application) : m_device(device)
{
    writeBlock(kSectionHeaderBlock, sectionHeader(application));
    writeBlock(kInterfaceBlock, ethernetInterface());
}

void PcapngWriter::writePacket(std::chrono::nanoseconds sinceEpoch, const QByteArray& packet)
{
    const quint64 time = quint64(sinceEpoch.count());
    QByteArray body;
    appendLittleEndian(&body, quint32(0)); // the one interface
    appendLittleEndian(&body, quint32(time >> 32));
    appendLittleEndian(&body, quint32(time));
    appendLittleEndian(&body, quint32(packet.size())); // captured
    appendLittleEndian(&body, quint32(packet.size())); // on the wire
    body.append(packet);
    padToWords(&body);
    writeBlock(kEnhancedPacketBlock, body);
}

void PcapngWriter::writeBlock(quint32 type, const QByteArray& body)
{
    if (!m_error.isEmpty())
        return;
    const quint32 length = quint32(body.size() + kBlockFrameSize);
    QByteArray block;
    block.reserve(int(length));
    appendLittleEndian(&block, type);
    appendLittleEndian(&block, length);
    block.append(body);
    appendLittleEndian(&block, length);
    writeWhole(block);
}

/// A part that was written tells nothing of why the rest was not.
void PcapngWriter::writeWhole(const QByteArray& block)
{
    qint64 done = 0;
    while (done < block.size()) {
        const qint64 count = m_device->write(block.constData() + done, block.size() - done);
        if (count <= 0) {
            m_error = m_device->errorString();
            cutOff(done);
            return;
        }
        done += count;
    }
}

/// Takes a part of a block away, where the device is a file.
void PcapngWriter::cutOff(qint64 bytes)
{
    auto* file = qobject_cast<QFileDevice*>(m_device);
    if (file && !file->isSequential() && bytes > 0)
        file->resize(file->size() - bytes);
}

} // namespace plc::capture
