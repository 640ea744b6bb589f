#include "recorder/sample_block.h"

#include <algorithm>
#include <cstring>

#include "recorder/byte_writer.h"

namespace plc::recorder {
namespace {

constexpr quint8 kQualityMask = 0x03;
constexpr quint8 kFormMask = 0x0C;
constexpr quint8 kSame = 0x00;
constexpr quint8 kPatch = 0x04;
constexpr quint8 kWhole = 0x08;
constexpr quint8 kSameInterval = 0x10;
constexpr int kLongHalf = 15;

// Times of a damaged block may lie anywhere: they wrap.
qint64 sum(qint64 a, qint64 b)
{
    return qint64(quint64(a) + quint64(b));
}

qint64 difference(qint64 a, qint64 b)
{
    return qint64(quint64(a) - quint64(b));
}

int equalAtBegin(const QByteArray& a, const QByteArray& b)
{
    const char* const begin = a.constData();
    return int(std::mismatch(begin, begin + a.size(), b.constData()).first - begin);
}

int equalAtEnd(const QByteArray& a, const QByteArray& b, int most)
{
    int count = 0;
    while (count < most && a[int(a.size()) - 1 - count] == b[int(b.size()) - 1 - count])
        ++count;
    return count;
}

} // namespace

SampleEncoder::SampleEncoder(const QByteArray& block) : m_block(block)
{
    SampleDecoder decoder(block);
    while (decoder.next()) {
        m_last = decoder.sample();
        m_interval = decoder.interval();
    }
}

void SampleEncoder::append(const Sample& sample)
{
    const qint64 interval = difference(sample.time, m_last.time);
    const qint64 deviation = difference(interval, m_interval);
    const bool isSame = sample.bytes == m_last.bytes;
    const bool isPatch = !isSame && sample.bytes.size() == m_last.bytes.size();
    const int head = int(sample.quality) |
                     (isSame    ? kSame
                      : isPatch ? kPatch
                                : kWhole) |
                     (deviation == 0 ? kSameInterval : 0);
    m_block.append(char(head));
    if (deviation != 0)
        appendSigned(deviation, &m_block);
    if (!isSame)
        appendValue(sample.bytes);
    m_interval = interval;
    m_last = sample;
}

void SampleEncoder::appendValue(const QByteArray& bytes)
{
    if (bytes.size() != m_last.bytes.size()) {
        appendNumber(quint64(bytes.size()), &m_block);
        m_block.append(bytes);
        return;
    }
    const int begin = equalAtBegin(bytes, m_last.bytes);
    const int end = equalAtEnd(bytes, m_last.bytes, int(bytes.size()) - begin);
    m_block.append(char(std::min(begin, kLongHalf) << 4 | std::min(end, kLongHalf)));
    for (const int length : {begin, end}) {
        if (length >= kLongHalf)
            appendNumber(quint64(length - kLongHalf), &m_block);
    }
    m_block.append(bytes.constData() + begin, int(bytes.size()) - begin - end);
}

bool SampleDecoder::next()
{
    if (m_reader.isAtEnd() || m_reader.hasFailed())
        return false;
    const quint8 head = m_reader.byte();
    if (!(head & kSameInterval))
        m_interval = sum(m_interval, m_reader.signedNumber());
    m_sample.time = sum(m_sample.time, m_interval);
    m_sample.quality = Quality(head & kQualityMask);
    if ((head & kFormMask) == kWhole)
        readWhole();
    else if ((head & kFormMask) != kSame)
        readPatch();
    return !m_reader.hasFailed();
}

void SampleDecoder::readWhole()
{
    const quint64 size = m_reader.number();
    if (const char* const bytes = m_reader.take(size))
        m_sample.bytes = QByteArray(bytes, int(size));
}

void SampleDecoder::readPatch()
{
    const quint8 halves = m_reader.byte();
    const quint64 begin = readLength(halves >> 4);
    const quint64 end = readLength(halves & 0x0F);
    const quint64 size = quint64(m_sample.bytes.size());
    // Lengths beyond the value are asked for as more bytes than there are.
    const bool isInside = begin <= size && end <= size - begin;
    const quint64 middle = isInside ? size - begin - end : ~quint64(0);
    if (const char* const bytes = m_reader.take(middle))
        std::memcpy(m_sample.bytes.data() + begin, bytes, size_t(middle));
}

quint64 SampleDecoder::readLength(quint8 half)
{
    return half < kLongHalf ? half : kLongHalf + m_reader.number();
}

} // namespace plc::recorder
