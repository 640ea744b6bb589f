#ifndef PLC_IMAGE_VALUE_WRITE_H
#define PLC_IMAGE_VALUE_WRITE_H

#include <QtCore/QByteArray>

#include "symbols/type_codes.h"

namespace plc {

/// Bytes on the wire for a host buffer of `size` bytes and a `count` of the host; 0 for types that
/// cannot be written. What the buffer lacks is 0, what it has beyond the count is written too.
qint64 wireSize(TypeGroup group, qint64 size, qint64 count);

/// The host's bytes in PLC order, padded with zeros to `size`.
QByteArray wireBytes(TypeGroup group, const QByteArray& value, int size);

} // namespace plc

#endif
