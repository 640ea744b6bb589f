#include "gateway/sparkplug/data_type.h"

namespace plc::gateway {
namespace {

using values::ValueFormat;

struct TypeRow {
    DataType element;
    DataType array;
    const char* name;
};

const TypeRow kTypes[] = {
    {DataType::Int8, DataType::Int8Array, "Int8"},
    {DataType::Int16, DataType::Int16Array, "Int16"},
    {DataType::Int32, DataType::Int32Array, "Int32"},
    {DataType::Int64, DataType::Int64Array, "Int64"},
    {DataType::UInt8, DataType::UInt8Array, "UInt8"},
    {DataType::UInt16, DataType::UInt16Array, "UInt16"},
    {DataType::UInt32, DataType::UInt32Array, "UInt32"},
    {DataType::UInt64, DataType::UInt64Array, "UInt64"},
    {DataType::Float, DataType::FloatArray, "Float"},
    {DataType::Double, DataType::DoubleArray, "Double"},
    {DataType::Boolean, DataType::BooleanArray, "Boolean"},
    {DataType::String, DataType::StringArray, "String"},
};

/// The one of four types, of 1, 2, 4 and 8 bytes, that stand one behind the other.
DataType ofSize(DataType smallest, int size)
{
    const quint32 step = size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
    return DataType(quint32(smallest) + step);
}

} // namespace

DataType elementType(const host::DataPoint& point)
{
    const values::IecType& type = *point.type;
    switch (type.format) {
        case ValueFormat::Boolean:
            return DataType::Boolean;
        case ValueFormat::Signed:
            return ofSize(DataType::Int8, type.size);
        case ValueFormat::Unsigned:
        case ValueFormat::Hexadecimal:
        case ValueFormat::Duration:
            return ofSize(DataType::UInt8, type.size);
        case ValueFormat::Real:
            return type.size == int(sizeof(float)) ? DataType::Float : DataType::Double;
        case ValueFormat::Text:
        case ValueFormat::WideText:
            break;
    }
    return DataType::String;
}

DataType dataType(const host::DataPoint& point)
{
    const DataType element = elementType(point);
    if (point.elements == 1)
        return element;
    for (const TypeRow& row : kTypes) {
        if (row.element == element)
            return row.array;
    }
    return element;
}

QString dataTypeName(quint32 number)
{
    for (const TypeRow& row : kTypes) {
        if (quint32(row.element) == number)
            return QString::fromLatin1(row.name);
        if (quint32(row.array) == number)
            return QString::fromLatin1(row.name) + QStringLiteral("Array");
    }
    return QStringLiteral("data type %1").arg(number);
}

} // namespace plc::gateway
