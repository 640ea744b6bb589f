#ifndef PLC_HOST_POINTS_VALUE_MEMORY_H
#define PLC_HOST_POINTS_VALUE_MEMORY_H

#include <QtCore/QByteArray>

#include "host/points/data_point.h"

namespace plc::host {

/// A value in the form that GetRegisterData() gives it, least significant byte first, from the
/// bytes of PLC memory that valueBytes() names.
QByteArray valueOfMemory(const DataPoint& point, const QByteArray& memory);

} // namespace plc::host

#endif
