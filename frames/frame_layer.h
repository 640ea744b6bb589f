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

/// Payload length that the header of a reply states: its low 16 bits, which is all that counts.
/// 0 for a reply without a whole header.
int statedPayloadLength(const QByteArray& reply);

/// Writes the header, the service and the entry count of a request into its whole frame.
void writeRequestStart(FrameWriter& frame, quint8 service, int entries);

/// The four bytes that end every read and write request.
void writeTrailer(FrameWriter& frame);

/// Appends a request to the queue; its reply states its own length.
void queueRequest(const QByteArray& frame, int dataOffset, int minReplyLength, const RW_VAR& var);

/// Notes in the settings record that `frames` replies are due, none of them answered.
void expectReplies(int frames);

} // namespace plc

/// 0 when `reply` holds exactly one whole frame, else 8.
PLC_DRIVER_EXPORT int infinite_length_data_reception(QByteArray* reply);

/// Judges a read or write reply: 0 invalid, 1 valid with data to store, 2 valid with nothing to
/// store (the `aux2` of the request at the head of the queue decides). `size` is not used.
PLC_DRIVER_EXPORT int CheckGetData(const QByteArray* reply, int size);

#endif
