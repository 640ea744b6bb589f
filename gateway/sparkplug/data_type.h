#ifndef PLC_GATEWAY_SPARKPLUG_DATA_TYPE_H
#define PLC_GATEWAY_SPARKPLUG_DATA_TYPE_H

#include <QtCore/QString>

#include "host/points/data_point.h"

namespace plc::gateway {

/// The types of Sparkplug that the gateway uses, by their numbers on the wire.
enum class DataType : quint32 {
    Int8 = 1,
    Int16 = 2,
    Int32 = 3,
    Int64 = 4,
    UInt8 = 5,
    UInt16 = 6,
    UInt32 = 7,
    UInt64 = 8,
    Float = 9,
    Double = 10,
    Boolean = 11,
    String = 12,
    Int8Array = 22,
    Int16Array = 23,
    Int32Array = 24,
    Int64Array = 25,
    UInt8Array = 26,
    UInt16Array = 27,
    UInt32Array = 28,
    UInt64Array = 29,
    FloatArray = 30,
    DoubleArray = 31,
    BooleanArray = 32,
    StringArray = 33
};

/// TIME is a number of milliseconds.
DataType dataType(const host::DataPoint& point);
/// Of one element.
DataType elementType(const host::DataPoint& point);

/// "Int8"; of a number that is none of the above "data type 99".
QString dataTypeName(quint32 number);

} // namespace plc::gateway

#endif
