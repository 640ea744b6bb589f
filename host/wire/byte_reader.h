#ifndef PLC_HOST_WIRE_BYTE_READER_H
#define PLC_HOST_WIRE_BYTE_READER_H

#include <QtCore/QByteArray>

namespace plc::host {

/// Walks over the big-endian fields of a frame. Past the end it gives zeros and ok() becomes false,
/// so that a whole walk is checked once, at its end.
class ByteReader {
public:
    explicit ByteReader(const QByteArray& bytes) : m_bytes(bytes) {}

    bool ok() const { return m_ok; }
    int position() const { return m_position; }
    int remaining() const { return int(m_bytes.size()) - m_position; }

    quint8 u8() { return quint8(number(1)); }
    quint16 u16() { return quint16(number(2)); }
    quint32 u32() { return number(4); }

    QByteArray bytes(int count)
    {
        if (!advance(count))
            return QByteArray();
        return m_bytes.mid(m_position - count, count);
    }
    void skip(int count) { advance(count); }

private:
    bool advance(int count)
    {
        if (!m_ok || count < 0 || count > remaining()) {
            m_ok = false;
            return false;
        }
        m_position += count;
        return true;
    }
    quint32 number(int width)
    {
        if (!advance(width))
            return 0;
        quint32 value = 0;
        for (int i = m_position - width; i < m_position; ++i)
            value = value << 8 | quint8(m_bytes[i]);
        return value;
    }

    const QByteArray m_bytes;
    int m_position = 0;
    bool m_ok = true;
};

} // namespace plc::host

#endif
