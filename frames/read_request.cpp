#include "frames/read_request.h"

#include "driver/Communication_Protocol.h"
#include "frames/frame_layer.h"

namespace {

/// Where the first data block of a read reply begins.
const int kReplyDataOffset = 12;

int readRequestSize(int entries)
{
    return plc::kRequestOverhead + plc::kEntryHeaderSize * entries;
}

} // namespace

void ReadRegister(RW_VAR* var)
{
    ReadAnalog(var);
}

void ReadAnalog(RW_VAR* var)
{
    if (!var)
        return;
    const int count = plc::batchSize();
    plc::FrameWriter frame(readRequestSize(count));
    plc::writeRequestStart(frame, plc::kReadService, count);
    for (int i = 0; i < count; ++i) {
        const RW_VAR& entry = PLC_driver.batch[i];
        frame.u16(quint16(entry.areaIndex)).u32(quint32(entry.address)).u32(quint32(entry.length));
    }
    plc::writeTrailer(frame);
    plc::queueRequest(frame.frame(), kReplyDataOffset, 0, *var);
    plc::expectReplies(1);
}

void Remote_ReadVar(RW_VAR*) {}
