#ifndef PLC_RECORDER_BYTE_READER_H
#define PLC_RECORDER_BYTE_READER_H

#include <QtCore/QByteArray>

namespace plc::recorder {

/// Reads what byte_writer.h wrote. Reads of more than there is give 0 and fail.
class ByteReader {
public:
    explicit ByteReader(const QByteArray& bytes)
        : m_at(bytes.constData()), m_end(m_at + bytes.size())
    {
    }

    bool isAtEnd() const { return m_at == m_end; }
    bool hasFailed() const { return m_hasFailed; }

    quint8 byte()
    {
        if (m_at == m_end) {
            m_hasFailed = true;
            return 0;
        }
        Q_ASSERT(m_at); // No byte array has null for its data.
        return quint8(*m_at++);
    }

    quint64 number()
    {
        quint64 number = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const quint8 next = byte();
            number |= quint64(next & 0x7F) << shift;
            if (next < 0x80)
                return number;
        }
        m_hasFailed = true;
        return 0;
    }

    qint64 signedNumber()
    {
        const quint64 folded = number();
        return qint64(folded >> 1 ^ (folded & 1 ? ~quint64(0) : 0));
    }

    /// `count` bytes, which belong to what is read; null when there are fewer.
    const char* take(quint64 count)
    {
        if (count > quint64(m_end - m_at)) {
            m_hasFailed = true;
            m_at = m_end;
            return nullptr;
        }
        const char* const taken = m_at;
        m_at += count;
        return taken;
    }

private:
    const char* m_at;
    const char* m_end;
    bool m_hasFailed = false;
};

} // namespace plc::recorder

#endif
