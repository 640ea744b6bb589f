#include "frames/read_request.h"

namespace plc {

namespace {

int readRequestSize(int entries)
{
    return kRequestOverhead + kEntryHeaderSize * entries;
}

} // namespace

QByteArray readRequest(const RW_VAR* batch, int count, PlcInfo info)
{
    FrameWriter frame(readRequestSize(count));
    writeRequestStart(frame, kReadService, count);
    for (int i = 0; i < count; ++i) {
        const RW_VAR& entry = batch[i];
        frame.u16(quint16(entry.areaIndex)).u32(quint32(entry.address)).u32(quint32(entry.length));
    }
    writeTrailer(frame, info);
    return frame.frame();
}

} // namespace plc
