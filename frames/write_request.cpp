#include "frames/write_request.h"

#include "driver/Communication_Protocol.h"
#include "frames/frame_layer.h"
#include "image/local_data.h"

namespace {

/// Value bytes that each entry of the batch carries, PLC_LARGEST_VALUE together. A length that is
/// negative or larger carries none; the image does not take such a value either.
struct ValueSizes {
    int bytes[plc::kBatchCapacity];
    int frameSize = plc::kRequestOverhead;

    explicit ValueSizes(int count)
    {
        int left = PLC_LARGEST_VALUE;
        for (int i = 0; i < count; ++i) {
            const int length = PLC_driver.batch[i].length;
            bytes[i] = length > 0 && length <= left ? length : 0;
            left -= bytes[i];
            frameSize += plc::kEntryHeaderSize + bytes[i];
        }
    }
};

} // namespace

void WriteRegister(RW_VAR* var)
{
    if (!var)
        return;
    WriteAnalog(var);
    if (PLC_driver.failed == 0)
        WriteDataToLocal(var);
}

void WriteAnalog(RW_VAR* var)
{
    if (!var)
        return;
    const int count = plc::batchSize();
    const ValueSizes sizes(count);
    // The head alone decides: behind a bit, every entry states length 0, whatever its type.
    const bool bits = PLC_driver.batch[0].dataType == PLC_TYPE_BIT;

    plc::FrameWriter frame(sizes.frameSize);
    plc::writeRequestStart(frame, plc::kWriteService, count);
    for (int i = 0; i < count; ++i) {
        const RW_VAR& entry = PLC_driver.batch[i];
        frame.u16(quint16(entry.areaIndex))
            .u32(quint32(entry.address))
            .u32(bits ? 0 : quint32(entry.length))
            .bytes(entry.data, sizes.bytes[i]);
    }
    plc::writeTrailer(frame);
    plc::queueRequest(frame.frame(), 0, 0, *var);
    plc::expectReplies(1);
}

void Remote_WriteVar(RW_VAR*) {}
