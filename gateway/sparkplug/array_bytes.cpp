#include "gateway/sparkplug/array_bytes.h"

#include "gateway/sparkplug/utf8.h"
#include "values/value_bits.h"

namespace plc::gateway {
namespace {

using values::ValueFormat;

constexpr int kCountBytes = 4;

void appendNumber(quint64 bits, int size, QByteArray* bytes)
{
    for (int i = 0; i < size; ++i)
        bytes->append(char(quint8(bits >> (8 * i))));
}

quint64 numberAt(const QByteArray& bytes, int offset, int size)
{
    quint64 bits = 0;
    for (int i = size - 1; i >= 0; --i)
        bits = bits << 8 | quint8(bytes[offset + i]);
    return bits;
}

/// The bit of element `index` in its byte.
quint8 bitOf(int index)
{
    return quint8(0x80 >> (index % 8));
}

QByteArray packedBits(const QVector<values::Value>& values)
{
    QByteArray bytes;
    appendNumber(quint64(values.size()), kCountBytes, &bytes);
    bytes.append((int(values.size()) + 7) / 8, '\0');
    for (int i = 0; i < int(values.size()); ++i) {
        char& byte = bytes.data()[kCountBytes + i / 8];
        if (std::get<bool>(values[i]))
            byte = char(quint8(byte) | bitOf(i));
    }
    return bytes;
}

Error otherCount(const host::DataPoint& point, quint64 count)
{
    return {QStringLiteral("%1 values are expected, not %2").arg(point.elements).arg(count)};
}

Expected<QVector<values::Value>> unpackedBits(const host::DataPoint& point, const QByteArray& bytes)
{
    if (bytes.size() < kCountBytes)
        return Error{QStringLiteral("an array of truth values begins with their count")};
    const quint64 count = numberAt(bytes, 0, kCountBytes);
    if (count != quint64(point.elements))
        return otherCount(point, count);
    if ((count + 7) / 8 != quint64(bytes.size() - kCountBytes)) {
        return Error{QStringLiteral("%1 truth values do not stand in %2 bytes")
                         .arg(count)
                         .arg(bytes.size() - kCountBytes)};
    }
    QVector<values::Value> values;
    values.reserve(point.elements);
    for (int i = 0; i < point.elements; ++i)
        values.append((quint8(bytes[kCountBytes + i / 8]) & bitOf(i)) != 0);
    return values;
}

} // namespace

QByteArray arrayBytes(const host::DataPoint& point, const QVector<values::Value>& values)
{
    if (point.type->format == ValueFormat::Boolean)
        return packedBits(values);
    QByteArray bytes;
    for (const values::Value& value : values) {
        if (values::isText(*point.type))
            bytes.append(utf8(std::get<QString>(value))).append('\0');
        else
            appendNumber(values::valueBits(value), point.type->size, &bytes);
    }
    return bytes;
}

Expected<QVector<values::Value>> arrayValues(const host::DataPoint& point, const QByteArray& bytes)
{
    if (point.type->format == ValueFormat::Boolean)
        return unpackedBits(point, bytes);
    const int size = point.type->size;
    if (bytes.size() % size != 0) {
        return Error{QStringLiteral("%1 bytes are no whole number of values of %2 bytes")
                         .arg(bytes.size())
                         .arg(size)};
    }
    if (bytes.size() / size != point.elements)
        return otherCount(point, quint64(bytes.size() / size));
    QVector<values::Value> values;
    values.reserve(point.elements);
    for (int offset = 0; offset < int(bytes.size()); offset += size)
        values.append(values::valueOfBits(*point.type, numberAt(bytes, offset, size)));
    return values;
}

} // namespace plc::gateway
