#include "simulator/frame_parser.h"

#include "simulator/big_endian.h"
#include "simulator/wire.h"

namespace plc::simulator {

void FrameParser::append(const QByteArray& bytes)
{
    m_buffer.remove(0, m_taken);
    m_taken = 0;
    m_buffer.append(bytes);
}

FrameParser::Outcome FrameParser::take(QByteArray* frame)
{
    const int available = bufferedBytes();
    for (int i = 0; i < qMin(available, 2); ++i) {
        if (quint8(m_buffer[m_taken + i]) != kFrameMark)
            return Outcome::NoFrame;
    }
    if (available < kFrameHeaderSize)
        return Outcome::NeedMore;
    const quint32 payload = quint32(bigEndianAt(m_buffer, m_taken + 2, 4));
    if (payload < quint32(kSmallestPayload) || payload > kLargestPayload)
        return Outcome::BadLength;
    const int size = kFrameHeaderSize + int(payload);
    if (available < size)
        return Outcome::NeedMore;
    *frame = m_buffer.mid(m_taken, size);
    m_taken += size;
    return Outcome::Complete;
}

} // namespace plc::simulator
