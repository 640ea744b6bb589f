#include "host/project/memory_layout.h"

#include <algorithm>
#include <vector>

#include "host/project/iec_types.h"

namespace plc {
namespace {

constexpr int kBitsPerByte = 8;
constexpr int kBitsPerWord = 16;
constexpr int kBytesPerWord = 2;

/// Bits of memory that a variable holds, counted through the bytes of its area.
struct Occupied {
    int area;
    qint64 first;
    qint64 end;
    int owner;
};

/// A BIT array longer than this meets itself in the byte that its words share.
constexpr qint64 kLongestBitArray = 3 * kBitsPerWord;

void appendOccupied(const Variable& variable, int owner, std::vector<Occupied>* occupied)
{
    if (variable.type == nullptr || !isBit(*variable.type)) {
        const qint64 size =
            (elementCount(variable) - 1) * elementStride(variable) + elementSize(variable);
        const qint64 first = qint64(variable.offset) * kBitsPerByte;
        occupied->push_back({variable.area, first, first + size * kBitsPerByte, owner});
        return;
    }
    const qint64 count = std::min(elementCount(variable), kLongestBitArray);
    for (qint64 index = 0; index < count; ++index) {
        const BitPlace place = bitPlace(variable.offset + index);
        const qint64 first = place.byte * kBitsPerByte + place.bit;
        occupied->push_back({variable.area, first, first + 1, owner});
    }
}

} // namespace

qint64 elementSize(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->size;
    if (variable.type->format == ValueFormat::Text)
        return qint64(variable.stringLength) + 1;
    if (variable.type->format == ValueFormat::WideText)
        return 2 * (qint64(variable.stringLength) + 1);
    return variable.type->size;
}

qint64 elementStride(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->size;
    if (isText(*variable.type))
        return kTextElementStride;
    return isBit(*variable.type) ? 1 : variable.type->size;
}

qint64 elementCount(const Variable& variable)
{
    qint64 count = 1;
    for (const ArrayDimension& dimension : variable.dimensions)
        count *= qint64(dimension.upper) - dimension.lower + 1;
    return count;
}

qint64 elementIndex(const QVector<ArrayDimension>& dimensions, const QVector<qint64>& subscripts)
{
    qint64 index = 0;
    for (int d = 0; d < int(dimensions.size()); ++d) {
        const qint64 extent = qint64(dimensions[d].upper) - dimensions[d].lower + 1;
        index = index * extent + (subscripts[d] - dimensions[d].lower);
    }
    return index;
}

qint64 transferEnd(const Variable& variable)
{
    const qint64 count = elementCount(variable);
    if (variable.type != nullptr && isBit(*variable.type)) {
        const qint64 words =
            (variable.offset % kBitsPerWord + count + kBitsPerWord - 1) / kBitsPerWord;
        return variable.offset / kBitsPerWord + kBytesPerWord * words;
    }
    const qint64 size = (count - 1) * elementStride(variable) + elementSize(variable);
    // Text elements lie an odd number of bytes apart, and several are moved in 16-bit registers.
    const bool isTextArray = variable.type != nullptr && isText(*variable.type) && count > 1;
    return variable.offset + size + (isTextArray ? size % kBytesPerWord : 0);
}

BitPlace bitPlace(qint64 offset)
{
    const int bitOfWord = int(offset % kBitsPerWord);
    const qint64 word = offset / kBitsPerWord;
    return {bitOfWord < kBitsPerByte ? word + 1 : word, bitOfWord % kBitsPerByte};
}

std::optional<SharedMemory> findSharedMemory(const QVector<Variable>& variables)
{
    std::vector<Occupied> occupied;
    for (int index = 0; index < int(variables.size()); ++index) {
        if (!variables[index].overlay)
            appendOccupied(variables[index], index, &occupied);
    }
    std::stable_sort(occupied.begin(), occupied.end(), [](const Occupied& a, const Occupied& b) {
        return a.area != b.area ? a.area < b.area : a.first < b.first;
    });
    const Occupied* reachesFarthest = nullptr;
    for (const Occupied& next : occupied) {
        if (reachesFarthest != nullptr && reachesFarthest->area == next.area &&
            next.first < reachesFarthest->end) {
            return SharedMemory{std::min(reachesFarthest->owner, next.owner),
                                std::max(reachesFarthest->owner, next.owner),
                                next.first / kBitsPerByte};
        }
        reachesFarthest = &next;
    }
    return {};
}

} // namespace plc
