#ifndef PLC_RECORDER_BYTE_WRITER_H
#define PLC_RECORDER_BYTE_WRITER_H

#include <QtCore/QByteArray>

namespace plc::recorder {

// Numbers of seven bits a byte, the low ones first; the eighth tells that more follow. Signed ones
// alternate, 0, -1, 1, -2, so that small ones are short.

inline void appendNumber(quint64 number, QByteArray* bytes)
{
    for (; number >= 0x80; number >>= 7)
        bytes->append(char(quint8(number | 0x80)));
    bytes->append(char(quint8(number)));
}

inline void appendSigned(qint64 number, QByteArray* bytes)
{
    appendNumber(quint64(number) << 1 ^ (number < 0 ? ~quint64(0) : 0), bytes);
}

} // namespace plc::recorder

#endif
