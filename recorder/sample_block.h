#ifndef PLC_RECORDER_SAMPLE_BLOCK_H
#define PLC_RECORDER_SAMPLE_BLOCK_H

#include <QtCore/QByteArray>

#include "recorder/byte_reader.h"
#include "recorder/change.h"

namespace plc::recorder {

// A block holds samples of one series, in the order in which they were recorded, each as what
// differs from the one before:
//
//   head    bits 0-1: quality; bits 2-3: form of the value; bit 4: as long after the sample before
//           as that one after the one before it
//   time    without bit 4: by how many ms it differs from that, a signed number
//   value   Same: nothing. Whole: number of bytes, bytes. Patch, where the lengths agree: a byte
//           with the numbers of equal bytes at the begin (high half) and at the end, in which 15
//           means that the number less 15 follows; then the bytes between.

/// Makes a block.
class SampleEncoder {
public:
    SampleEncoder() = default;
    /// Goes on with a block.
    explicit SampleEncoder(const QByteArray& block);

    void append(const Sample& sample);
    const QByteArray& block() const { return m_block; }

private:
    void appendValue(const QByteArray& bytes);

    QByteArray m_block;
    Sample m_last;
    qint64 m_interval = 0;
};

/// Reads a block.
class SampleDecoder {
public:
    explicit SampleDecoder(const QByteArray& block) : m_block(block), m_reader(m_block) {}
    SampleDecoder(const SampleDecoder&) = delete;
    SampleDecoder& operator=(const SampleDecoder&) = delete;

    /// Goes on to the next sample. Returns false behind the last one, and where the block is
    /// damaged.
    bool next();
    const Sample& sample() const { return m_sample; }
    qint64 interval() const { return m_interval; }
    bool isDamaged() const { return m_reader.hasFailed(); }

private:
    void readWhole();
    void readPatch();
    quint64 readLength(quint8 half);

    const QByteArray m_block;
    ByteReader m_reader;
    Sample m_sample;
    qint64 m_interval = 0;
};

} // namespace plc::recorder

#endif
