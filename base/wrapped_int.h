#ifndef PLC_BASE_WRAPPED_INT_H
#define PLC_BASE_WRAPPED_INT_H

#include <QtCore/QtGlobal>

namespace plc {

/// Reduces an exact intermediate value to the 32-bit member that stores it (two's complement).
inline qint32 toInt32(qint64 value)
{
    return qint32(quint32(quint64(value)));
}

/// The address `offset` bytes behind `address`; addresses go on at 0 after 2^32 - 1.
inline qint32 advanced(qint32 address, qint64 offset)
{
    return toInt32(address + offset);
}
inline quint32 advanced(quint32 address, qint64 offset)
{
    return quint32(quint64(address + offset));
}

} // namespace plc

#endif
