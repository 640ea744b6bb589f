#include "faults/stamped_plc.h"

#include <algorithm>

#include "faults/frames.h"

namespace plc::faults {
namespace {

constexpr int kIdentificationService = 0x01;
constexpr int kFileService = 0x31;
constexpr int kEntrySize = 10;
constexpr char kRefusal[] = {'\x00', '\x0A'};

QByteArray refusal()
{
    return frameOf(QByteArray(kRefusal, sizeof kRefusal));
}

bool meetsAny(const QVector<Range>& ranges, const Range& range)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [&range](const Range& other) { return other.meets(range); });
}

char stampedByte(int area, quint32 address, quint32 generation)
{
    const quint32 place = (quint32(area) * 0x9E3779B1u + address * 0x85EBCA6Bu) >> 24;
    if (address % 2 == 0)
        return char(place + generation);
    return char(place + 3 * generation + 7 * (generation >> 8));
}

} // namespace

Range rangeOf(const Array& array)
{
    return {array.area, quint32(array.address), quint32(memorySize(array))};
}

QByteArray stampedBytes(const Range& range, quint32 generation)
{
    QByteArray bytes(int(range.size), '\0');
    for (quint32 i = 0; i < range.size; ++i)
        bytes[int(i)] = stampedByte(range.area, range.address + i, generation);
    return bytes;
}

bool StampedReply::carries(const Range& range) const
{
    const quint32 end = range.address + range.size;
    for (quint32 next = range.address; next < end;) {
        const Range byte{range.area, next, 1};
        const auto holder = std::find_if(ranges.begin(), ranges.end(),
                                         [&byte](const Range& part) { return part.holds(byte); });
        if (holder == ranges.end())
            return false;
        next = holder->address + holder->size;
    }
    return true;
}

QByteArray StampedPlc::answer(const QByteArray& request, qint64 requestedAt)
{
    ++m_generation;
    switch (int(quint8(request.at(kServicePosition)))) {
        case kIdentificationService:
            return frameOf(QByteArray(m_identificationSize, '\0'));
        case kFileService:
            return frameOf(QByteArray(m_fileSize, '\0'));
        case kReadService:
            return answerRead(request, requestedAt);
        case kWriteService:
            return answerWrite(request, requestedAt);
        default:
            return refusal();
    }
}

QByteArray StampedPlc::answerRead(const QByteArray& request, qint64 requestedAt)
{
    StampedReply reply{m_generation, m_connection, requestedAt, {}};
    QByteArray payload(6, '\0');
    const quint32 count = bigEndian(request, kEntryCountPosition, 4);
    for (quint32 i = 0; i < count; ++i) {
        const int position = kFirstEntryPosition + kEntrySize * int(i);
        const Range range{int(bigEndian(request, position, 2)), bigEndian(request, position + 2, 4),
                          bigEndian(request, position + 6, 4)};
        if (meetsAny(m_refusedReads, range))
            return refusal();
        reply.ranges.append(range);
        payload += '\0' + stampedBytes(range, m_generation);
    }
    m_record.replies.push_back(reply);
    return frameOf(payload);
}

QByteArray StampedPlc::answerWrite(const QByteArray& request, qint64 requestedAt)
{
    const std::size_t first = m_record.values.size();
    const quint32 count = bigEndian(request, kEntryCountPosition, 4);
    int position = kFirstEntryPosition;
    bool isTaken = true;
    for (quint32 i = 0; i < count; ++i) {
        ReceivedValue value;
        value.at = requestedAt;
        value.area = int(bigEndian(request, position, 2));
        value.address = bigEndian(request, position + 2, 4);
        const quint32 length = bigEndian(request, position + 6, 4);
        value.isBit = length == 0;
        value.data = request.mid(position + kEntrySize, value.isBit ? 1 : int(length));
        position += kEntrySize + int(value.data.size());
        const Range range{value.area, value.isBit ? value.address / 8 : value.address,
                          quint32(value.data.size())};
        isTaken = isTaken && !meetsAny(m_refusedWrites, range);
        m_record.values.push_back(value);
    }
    for (std::size_t i = first; i < m_record.values.size(); ++i)
        m_record.values[i].isTaken = isTaken;
    return isTaken ? frameOf(QByteArray(2, '\0')) : refusal();
}

} // namespace plc::faults
