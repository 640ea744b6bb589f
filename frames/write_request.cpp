#include "frames/write_request.h"

namespace plc {

namespace {

/// Hands out the value bytes that the entries of a request carry, one entry after the other.
class ValueBudget {
public:
    /// Value bytes of an entry of this length.
    int take(int length)
    {
        if (length <= 0 || length > m_left)
            return 0;
        m_left -= length;
        return length;
    }

private:
    int m_left = PLC_LARGEST_VALUE;
};

int writeRequestSize(const RW_VAR* batch, int count)
{
    ValueBudget budget;
    int size = kRequestOverhead;
    for (int i = 0; i < count; ++i)
        size += kEntryHeaderSize + budget.take(batch[i].length);
    return size;
}

} // namespace

QByteArray writeRequest(const RW_VAR* batch, int count, PlcInfo info)
{
    // The head alone decides: behind a bit, every entry states length 0, whatever its type.
    const bool bits = batch[0].dataType == PLC_TYPE_BIT;
    FrameWriter frame(writeRequestSize(batch, count));
    ValueBudget budget;
    writeRequestStart(frame, kWriteService, count);
    for (int i = 0; i < count; ++i) {
        const RW_VAR& entry = batch[i];
        frame.u16(quint16(entry.areaIndex))
            .u32(quint32(entry.address))
            .u32(bits ? 0 : quint32(entry.length))
            .bytes(entry.data, budget.take(entry.length));
    }
    writeTrailer(frame, info);
    return frame.frame();
}

} // namespace plc
