#include "host/points/value_memory.h"

#include <algorithm>

#include "host/points/value_layout.h"
#include "project/memory_layout.h"

namespace plc::host {
namespace {

/// Words overlap: a bit's word begins at the byte that its number divided by 16 names.
QByteArray bitsOfMemory(const DataPoint& point, const QByteArray& memory)
{
    QByteArray bits(point.elements, '\0');
    const int first = point.address / project::kBitsPerWord;
    for (int i = 0; i < point.elements; ++i) {
        const int bit = point.address + i;
        const int byte = bit / project::kBitsPerWord - first;
        const int word = quint8(memory[byte]) << 8 | quint8(memory[byte + 1]);
        bits[i] = char(word >> bit % project::kBitsPerWord & 1);
    }
    return bits;
}

} // namespace

QByteArray valueOfMemory(const DataPoint& point, const QByteArray& memory)
{
    if (values::isBit(*point.type))
        return bitsOfMemory(point, memory);
    if (values::isText(*point.type))
        return memory;
    QByteArray value = memory;
    if (point.type->format == values::ValueFormat::Boolean) {
        std::transform(value.begin(), value.end(), value.begin(),
                       [](char byte) { return char(byte != 0); });
    } else if (point.type->size == 1) {
        // Packed at the front of a register for each element.
        value.append(QByteArray((project::kRegisterSize - 1) * point.elements, '\0'));
    } else {
        for (auto element = value.begin(); element != value.end(); element += point.type->size)
            std::reverse(element, element + point.type->size);
    }
    return value;
}

} // namespace plc::host
