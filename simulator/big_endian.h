#ifndef PLC_SIMULATOR_BIG_ENDIAN_H
#define PLC_SIMULATOR_BIG_ENDIAN_H

#include <QtCore/QByteArray>

namespace plc::simulator {

/// Appends the low `width` bytes of `number`, most significant first.
inline void appendBigEndian(QByteArray* bytes, quint64 number, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes->append(char(number >> shift & 0xff));
}

/// The number that `width` bytes from `position` on make up; they must be there.
inline quint64 bigEndianAt(const QByteArray& bytes, int position, int width)
{
    quint64 number = 0;
    for (int i = position; i < position + width; ++i)
        number = number << 8 | quint8(bytes[i]);
    return number;
}

} // namespace plc::simulator

#endif
