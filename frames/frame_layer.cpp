#include "frames/frame_layer.h"

#include "driver/Communication_Protocol.h"

namespace {

enum FrameCheck { kWhole = 0, kNotWhole = 8 };
enum DataCheck { kInvalid = 0, kValidToStore = 1, kValid = 2 };

const quint16 kTrailerMark = 0x0001;

/// The magic and the high half of the length are not looked at: PLCs are told apart by neither.
bool isWholeFrame(const QByteArray& reply)
{
    return reply.size() >= plc::kHeaderSize &&
           plc::statedPayloadLength(reply) + plc::kHeaderSize == int(reply.size());
}

} // namespace

namespace plc {

int statedPayloadLength(const QByteArray& reply)
{
    return FrameReader(reply, kPayloadLengthOffset).u16();
}

void writeRequestStart(FrameWriter& frame, quint8 service, int entries)
{
    const int payload = frame.left() - kHeaderSize;
    frame.u16(kMagic).u16(0).u16(quint16(payload));
    frame.u8(service).u8(0).u32(quint32(entries));
}

void writeTrailer(FrameWriter& frame)
{
    // The PLC sent the two information bytes in the opposite order.
    frame.u16(kTrailerMark).u8(PLC_driver.plcInfo1).u8(PLC_driver.plcInfo2);
}

void queueRequest(const QByteArray& frame, int dataOffset, int minReplyLength, const RW_VAR& var)
{
    Protocol request;
    request.frame = frame;
    request.frameLength = int(frame.size());
    request.replyLength = PLC_REPLY_LENGTH_OPEN;
    request.dataOffset = dataOffset;
    request.minReplyLength = minReplyLength;
    request.var = var;
    PLC_driver.requestQueue.append(request);
}

void expectReplies(int frames)
{
    if (!PLC_driver.settings)
        return;
    PLC_driver.settings->frameCount = frames;
    PLC_driver.settings->frameIndex = 0;
}

} // namespace plc

int infinite_length_data_reception(QByteArray* reply)
{
    return reply && isWholeFrame(*reply) ? kWhole : kNotWhole;
}

int CheckGetData(const QByteArray* reply, int)
{
    if (!reply || !isWholeFrame(*reply) || reply->size() < plc::kStatusEnd)
        return kInvalid;
    if (plc::FrameReader(*reply, plc::kStatusOffset).u16() != 0)
        return kInvalid;
    if (PLC_driver.requestQueue.isEmpty())
        return kInvalid;
    return PLC_driver.requestQueue.at(0).var.aux2 == PLC_REPLY_STORED ? kValidToStore : kValid;
}
