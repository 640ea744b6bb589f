#include "frames/frame_layer.h"

namespace plc {

namespace {

const quint16 kTrailerMark = 0x0001;

} // namespace

int statedPayloadLength(const QByteArray& reply)
{
    return FrameReader(reply, kPayloadLengthOffset).u16();
}

bool isWholeFrame(const QByteArray& reply)
{
    // The magic and the high half of the length are not looked at: PLCs are told apart by neither.
    return reply.size() >= kHeaderSize &&
           statedPayloadLength(reply) + kHeaderSize == int(reply.size());
}

bool isGoodReply(const QByteArray& reply)
{
    return isWholeFrame(reply) && reply.size() >= kStatusEnd &&
           FrameReader(reply, kStatusOffset).u16() == 0;
}

void writeRequestStart(FrameWriter& frame, quint8 service, int entries)
{
    const int payload = frame.left() - kHeaderSize;
    frame.u16(kMagic).u16(0).u16(quint16(payload));
    frame.u8(service).u8(0).u32(quint32(entries));
}

void writeTrailer(FrameWriter& frame, PlcInfo info)
{
    // The PLC sent the two information bytes in the opposite order.
    frame.u16(kTrailerMark).u8(info.info1).u8(info.info2);
}

} // namespace plc

int infinite_length_data_reception(QByteArray* reply)
{
    enum FrameCheck { kWhole = 0, kNotWhole = 8 };
    return reply && plc::isWholeFrame(*reply) ? kWhole : kNotWhole;
}
