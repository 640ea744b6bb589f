#ifndef PLC_FRAMES_READ_REQUEST_H
#define PLC_FRAMES_READ_REQUEST_H

#include "frames/frame_layer.h"

namespace plc {

/// Where the first data block of a read reply begins.
const int kReadReplyDataOffset = 12;

/// The request that reads the `count` entries of `batch`.
QByteArray readRequest(const RW_VAR* batch, int count, PlcInfo info);

} // namespace plc

#endif
