#ifndef PLC_HOST_POINTS_VALUE_MEMORY_H
#define PLC_HOST_POINTS_VALUE_MEMORY_H

#include <QtCore/QByteArray>

#include "host/points/data_point.h"

namespace plc::host {

/// A run of bytes as it lies in PLC memory; whoever gives it owns it.
struct MemoryView {
    const char* bytes;
    int size;
};

/// A value in the form that GetRegisterData() gives it, least significant byte first, from the
/// bytes of PLC memory that valueBytes() names.
QByteArray valueOfMemory(const DataPoint& point, const QByteArray& memory);

/// Bytes of that value.
int valueSize(const DataPoint& point, const MemoryView& memory);
/// Puts it where `value` has room for so many bytes.
void writeValueOfMemory(const DataPoint& point, const MemoryView& memory, char* value);

} // namespace plc::host

#endif
