#ifndef PLC_HOST_WIRE_FRAME_ENTRIES_H
#define PLC_HOST_WIRE_FRAME_ENTRIES_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "values/export.h"

namespace plc::host {

/// Every frame begins with the magic 0xBB 0xBB and a payload length of four bytes, of which the low
/// two count.
constexpr int kFrameHeaderSize = 6;
constexpr char kFrameMagic[] = "\xBB\xBB";

enum class Service : quint8 {
    Unknown = 0,
    Identification = 0x01,
    Read = 0x2E,
    File = 0x31,
    Write = 0x3C
};

/// One range of PLC memory that a request reads or writes.
struct FramePlace {
    quint16 area = 0;
    /// Counts bytes; bits in an entry that writes a bit.
    quint32 address = 0;
    quint32 length = 0;
    bool isBit = false;

    bool samePlace(const FramePlace& other) const
    {
        return area == other.area && address == other.address && length == other.length &&
               isBit == other.isBit;
    }
};

struct FrameEntry : FramePlace {
    int dataPosition = 0; ///< In the frame, of the bytes that a write carries.
};

/// What a request frame asks for, read from its bytes.
struct RequestContent {
    Service service = Service::Unknown;
    QVector<FrameEntry> entries;
    bool wellFormed = false;

    bool isLogin() const { return service == Service::Identification || service == Service::File; }
};

/// Whether a frame can begin with these bytes; they may be too few to tell.
PLC_HOST_EXPORT bool mayBeginFrame(const QByteArray& bytes);

/// Size of the frame that begins with these bytes, or -1 while its header is incomplete.
PLC_HOST_EXPORT int statedFrameSize(const QByteArray& bytes);

PLC_HOST_EXPORT RequestContent parseRequest(const QByteArray& frame);

/// The bytes that an entry of a write carries, of the frame that it was read from.
inline QByteArray writtenBytes(const QByteArray& frame, const FrameEntry& entry)
{
    return frame.mid(entry.dataPosition, int(entry.length));
}

/// Status of a reply: 0 good; -1 when it has none.
PLC_HOST_EXPORT int replyStatus(const QByteArray& reply);

/// Size of a good reply to a read of these entries.
PLC_HOST_EXPORT int readReplySize(const QVector<FrameEntry>& entries);

/// Data blocks of a good reply to a read of these entries; missing ones are empty.
PLC_HOST_EXPORT QVector<QByteArray> readReplyBlocks(const QByteArray& reply,
                                                    const QVector<FrameEntry>& entries);

} // namespace plc::host

#endif
