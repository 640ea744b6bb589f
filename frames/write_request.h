#ifndef PLC_FRAMES_WRITE_REQUEST_H
#define PLC_FRAMES_WRITE_REQUEST_H

#include "frames/frame_layer.h"

namespace plc {

/// The request that writes the `count` entries of `batch`, at least one. All of them together carry
/// PLC_LARGEST_VALUE bytes at most; an entry whose length is negative or does not fit states it
/// without value bytes.
QByteArray writeRequest(const RW_VAR* batch, int count, PlcInfo info);

} // namespace plc

#endif
