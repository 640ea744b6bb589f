#include "host/wire/frame_entries.h"

#include "host/wire/byte_reader.h"

namespace plc::host {
namespace {

/// Service, reserved byte and number of entries.
constexpr int kRequestPreambleSize = kFrameHeaderSize + 6;
constexpr int kEntryHeaderSize = 10;
/// Two fixed bytes and the two bytes that the PLC gave at the login.
constexpr int kTrailerSize = 4;

/// Header, status and four further bytes stand before the first data block.
constexpr int kFirstBlockOffset = 12;
/// Each data block begins with a byte of its own.
constexpr int kBlockLeadSize = 1;

Service serviceOf(quint8 code)
{
    switch (Service(code)) {
        case Service::Identification:
        case Service::Read:
        case Service::File:
        case Service::Write:
            return Service(code);
        case Service::Unknown:
            break;
    }
    return Service::Unknown;
}

/// Writes of bits state the length 0 for all their entries and carry one byte for each.
bool carriesBits(const QByteArray& frame, quint32 count)
{
    ByteReader reader(frame);
    reader.skip(kRequestPreambleSize + kEntryHeaderSize - 4);
    return count > 0 && reader.u32() == 0 && reader.ok() &&
           qint64(frame.size()) ==
               kRequestPreambleSize + qint64(count) * (kEntryHeaderSize + 1) + kTrailerSize;
}

FrameEntry readEntry(ByteReader* reader, Service service, bool isBit)
{
    FrameEntry entry;
    entry.area = reader->u16();
    entry.address = reader->u32();
    entry.length = reader->u32();
    entry.isBit = isBit;
    if (isBit)
        entry.length = 1;
    if (service == Service::Write) {
        entry.dataPosition = reader->position();
        const bool fits = entry.length <= quint32(reader->remaining());
        reader->skip(fits ? int(entry.length) : -1);
    }
    return entry;
}

} // namespace

bool mayBeginFrame(const QByteArray& bytes)
{
    const QByteArray magic(kFrameMagic);
    return bytes.left(magic.size()) == magic.left(bytes.size());
}

int statedFrameSize(const QByteArray& bytes)
{
    if (bytes.size() < kFrameHeaderSize)
        return -1;
    ByteReader reader(bytes.left(kFrameHeaderSize));
    reader.skip(4);
    return kFrameHeaderSize + reader.u16();
}

RequestContent parseRequest(const QByteArray& frame)
{
    RequestContent content;
    ByteReader reader(frame);
    reader.skip(kFrameHeaderSize);
    content.service = serviceOf(reader.u8());
    reader.skip(1);
    if (content.service != Service::Read && content.service != Service::Write) {
        content.wellFormed = reader.ok() && content.service != Service::Unknown;
        return content;
    }
    const quint32 count = reader.u32();
    const bool isBit = content.service == Service::Write && carriesBits(frame, count);
    content.entries.reserve(int(qMin(count, quint32(reader.remaining() / kEntryHeaderSize))));
    for (quint32 i = 0; i < count && reader.ok(); ++i)
        content.entries.append(readEntry(&reader, content.service, isBit));
    if (!reader.ok() && !content.entries.isEmpty())
        content.entries.removeLast();
    content.wellFormed = reader.ok() && reader.remaining() == kTrailerSize;
    return content;
}

int replyStatus(const QByteArray& reply)
{
    ByteReader reader(reply);
    reader.skip(kFrameHeaderSize);
    const int status = reader.u16();
    return reader.ok() ? status : -1;
}

int readReplySize(const QVector<FrameEntry>& entries)
{
    qint64 size = kFirstBlockOffset;
    for (const FrameEntry& entry : entries)
        size += kBlockLeadSize + qint64(entry.length);
    return int(qMin<qint64>(size, kFrameHeaderSize + 0xFFFF));
}

QVector<QByteArray> readReplyBlocks(const QByteArray& reply, const QVector<FrameEntry>& entries)
{
    ByteReader reader(reply);
    reader.skip(kFirstBlockOffset);
    QVector<QByteArray> blocks;
    for (const FrameEntry& entry : entries) {
        reader.skip(kBlockLeadSize);
        const bool fits = entry.length <= quint32(reader.remaining());
        blocks.append(reader.bytes(fits ? int(entry.length) : -1));
    }
    return blocks;
}

} // namespace plc::host
