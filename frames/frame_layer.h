#ifndef PLC_FRAMES_FRAME_LAYER_H
#define PLC_FRAMES_FRAME_LAYER_H

#include "driver/plc_driver.h"
#include "frames/big_endian.h"

namespace plc {

// Every frame: magic 0xBB 0xBB, payload length (4 bytes, of which only the low two are used), then
// the payload. A request's payload begins with service and reserved byte, a reply's with a status.
const quint16 kMagic = 0xBBBB;
const int kHeaderSize = 6;
const int kPayloadLengthOffset = 4;
const int kStatusOffset = 6;
const int kStatusEnd = 8;

const quint8 kReadService = 0x2E;
const quint8 kWriteService = 0x3C;

/// Header, service, reserved byte, entry count and trailer of a read or write request.
const int kRequestOverhead = 16;
/// Area index, address and length of one entry.
const int kEntryHeaderSize = 10;

/// Two bytes of the second login reply, which end every request from then on.
struct PlcInfo {
    quint8 info1; ///< Byte 25 of the reply.
    quint8 info2; ///< Byte 24 of the reply.
};

/// Payload length that the header of a reply states: its low 16 bits, which is all that counts.
/// 0 for a reply without a whole header.
int statedPayloadLength(const QByteArray& reply);

/// Whether `reply` holds exactly one whole frame.
bool isWholeFrame(const QByteArray& reply);

/// Whether `reply` is one whole frame whose status tells that the request was carried out.
bool isGoodReply(const QByteArray& reply);

/// Writes the header, the service and the entry count of a request into its whole frame.
void writeRequestStart(FrameWriter& frame, quint8 service, int entries);

/// The four bytes that end every read and write request.
void writeTrailer(FrameWriter& frame, PlcInfo info);

} // namespace plc

/// 0 when `reply` holds exactly one whole frame, else 8.
PLC_DRIVER_EXPORT int infinite_length_data_reception(QByteArray* reply);

#endif
