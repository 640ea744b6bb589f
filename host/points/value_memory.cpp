#include "host/points/value_memory.h"

#include <algorithm>

#include "project/memory_layout.h"

namespace plc::host {
namespace {

/// Words overlap: a bit's word begins at the byte that its number divided by 16 names.
void writeBits(const DataPoint& point, const char* memory, char* value)
{
    const int first = point.address / project::kBitsPerWord;
    for (int i = 0; i < point.elements; ++i) {
        const int bit = point.address + i;
        const int byte = bit / project::kBitsPerWord - first;
        const int word = quint8(memory[byte]) << 8 | quint8(memory[byte + 1]);
        value[i] = char(word >> bit % project::kBitsPerWord & 1);
    }
}

template <int Size>
void writeReversed(const MemoryView& memory, char* value)
{
    for (int i = 0; i + Size <= memory.size; i += Size)
        std::reverse_copy(memory.bytes + i, memory.bytes + i + Size, value + i);
}

void writeNumbers(int size, const MemoryView& memory, char* value)
{
    switch (size) {
        case 2:
            return writeReversed<2>(memory, value);
        case 4:
            return writeReversed<4>(memory, value);
        default:
            return writeReversed<8>(memory, value);
    }
}

} // namespace

int valueSize(const DataPoint& point, const MemoryView& memory)
{
    const values::IecType& type = *point.type;
    if (values::isBit(type))
        return point.elements;
    const bool isPacked = type.size == 1 && type.format != values::ValueFormat::Boolean;
    return isPacked ? project::kRegisterSize * point.elements : memory.size;
}

void writeValueOfMemory(const DataPoint& point, const MemoryView& memory, char* value)
{
    const values::IecType& type = *point.type;
    const char* const end = memory.bytes + memory.size;
    if (values::isBit(type)) {
        writeBits(point, memory.bytes, value);
    } else if (values::isText(type)) {
        std::copy(memory.bytes, end, value);
    } else if (type.format == values::ValueFormat::Boolean) {
        std::transform(memory.bytes, end, value, [](char byte) { return char(byte != 0); });
    } else if (type.size == 1) {
        // Packed at the front of a register for each element.
        char* const rest = std::copy(memory.bytes, end, value);
        std::fill(rest, value + valueSize(point, memory), '\0');
    } else {
        writeNumbers(type.size, memory, value);
    }
}

QByteArray valueOfMemory(const DataPoint& point, const QByteArray& memory)
{
    const MemoryView view{memory.constData(), int(memory.size())};
    QByteArray value(valueSize(point, view), Qt::Uninitialized);
    writeValueOfMemory(point, view, value.data());
    return value;
}

} // namespace plc::host
