#ifndef PLC_TESTS_FAULTS_FRAMES_H
#define PLC_TESTS_FAULTS_FRAMES_H

#include <QtCore/QByteArray>

namespace plc::faults {

constexpr int kHeaderSize = 6;
/// Of the two bytes of the length that count.
constexpr int kLengthPosition = 4;
constexpr int kServicePosition = 6;
constexpr int kStatusPosition = 6;
/// Of a request.
constexpr int kEntryCountPosition = 8;
constexpr int kFirstEntryPosition = 12;
/// Header and status.
constexpr int kSmallestReply = 8;

constexpr int kReadService = 0x2E;
constexpr int kWriteService = 0x3C;

inline QByteArray frameOf(const QByteArray& payload)
{
    QByteArray frame = QByteArray::fromHex("BBBB0000");
    frame += char(payload.size() >> 8);
    frame += char(payload.size() & 0xFF);
    return frame + payload;
}

inline quint32 bigEndian(const QByteArray& bytes, int position, int width)
{
    quint32 number = 0;
    for (int i = 0; i < width; ++i)
        number = number << 8 | quint8(bytes.at(position + i));
    return number;
}

/// Takes the first whole frame out of a stream that holds nothing but frames; empty when there is
/// none yet.
inline QByteArray takeFrame(QByteArray* stream)
{
    if (stream->size() < kHeaderSize)
        return {};
    const int size = kHeaderSize + int(bigEndian(*stream, kLengthPosition, 2));
    if (stream->size() < size)
        return {};
    const QByteArray frame = stream->left(size);
    stream->remove(0, size);
    return frame;
}

} // namespace plc::faults

#endif
