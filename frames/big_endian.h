#ifndef PLC_FRAMES_BIG_ENDIAN_H
#define PLC_FRAMES_BIG_ENDIAN_H

#include <QtCore/QByteArray>
#include <QtCore/QtEndian>

#include <cstring>

namespace plc {

/// Writes the fields of a frame in wire order, most significant byte first. The size is fixed at
/// the start; what would go beyond it is not written.
class FrameWriter {
public:
    explicit FrameWriter(int size)
        : m_frame(size, '\0'), m_next(m_frame.data()), m_end(m_next + size)
    {
    }

    FrameWriter& u8(quint8 value) { return put(&value, sizeof value); }
    FrameWriter& u16(quint16 value)
    {
        value = qToBigEndian(value);
        return put(&value, sizeof value);
    }
    FrameWriter& u32(quint32 value)
    {
        value = qToBigEndian(value);
        return put(&value, sizeof value);
    }
    /// The first `count` bytes of `value`, padded with zeros; nothing for a negative count.
    FrameWriter& bytes(const QByteArray& value, int count)
    {
        count = qMax(0, count);
        const int present = qMin(count, int(value.size()));
        put(value.constData(), present);
        m_next += qMin(count - present, left());
        return *this;
    }
    QByteArray frame() const { return m_frame; }
    /// Bytes not written yet.
    int left() const { return int(m_end - m_next); }

private:
    Q_DISABLE_COPY(FrameWriter)

    FrameWriter& put(const void* field, int size)
    {
        if (size <= left()) {
            std::memcpy(m_next, field, size_t(size));
            m_next += size;
        }
        return *this;
    }

    QByteArray m_frame;
    char* m_next;
    char* const m_end;
};

/// Reads the fields of a frame in wire order, most significant byte first. Nothing is read beyond
/// the end: fields there read as 0, and nothing is left.
class FrameReader {
public:
    FrameReader(const QByteArray& frame, qint64 position)
        : m_bytes(reinterpret_cast<const uchar*>(frame.constData())), m_size(frame.size())
    {
        skip(position);
    }

    quint16 u16()
    {
        quint16 value = 0;
        if (left() >= int(sizeof value))
            std::memcpy(&value, here(), sizeof value);
        skip(sizeof value);
        return qFromBigEndian(value);
    }
    /// Goes on by `count` bytes; a negative count is none. Frames are short: the sum of all counts
    /// stays far below what 64 bits hold.
    void skip(qint64 count) { m_position += qMax(qint64(0), count); }
    /// The bytes from here on; `left()` of them.
    const uchar* here() const { return m_bytes + qMin(m_position, m_size); }
    int left() const { return int(qMax(qint64(0), m_size - m_position)); }

private:
    const uchar* m_bytes;
    qint64 m_size;
    qint64 m_position = 0; ///< Also beyond the end: a sum that waits for no comparison.
};

} // namespace plc

#endif
