#include "project/memory_layout.h"

#include <QtCore/QPair>
#include <QtCore/QSet>

#include <algorithm>
#include <tuple>
#include <vector>

#include "values/iec_types.h"

namespace plc::project {
namespace {

constexpr int kBytesPerWord = 2;

/// Bits of memory that a variable holds, counted through the bytes of its area.
struct Occupied {
    int area;
    qint64 first;
    qint64 end;
    int owner;
};

/// A BIT array longer than this meets itself in the byte that its words share.
constexpr qint64 kLongestBitArray = qint64(3) * kBitsPerWord;

void appendOccupied(const Variable& variable, int owner, std::vector<Occupied>* occupied)
{
    if (!variable.type || !values::isBit(*variable.type)) {
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

enum class Overlays { LeftOut, Included };

/// Of those that begin at one place the largest comes first.
void sortByPlace(std::vector<Occupied>* occupied)
{
    std::stable_sort(occupied->begin(), occupied->end(), [](const Occupied& a, const Occupied& b) {
        return std::tie(a.area, a.first, b.end) < std::tie(b.area, b.first, a.end);
    });
}

/// In the order of memory.
std::vector<Occupied> occupiedMemory(const QVector<Variable>& variables, Overlays overlays)
{
    std::vector<Occupied> occupied;
    for (int index = 0; index < int(variables.size()); ++index) {
        if (overlays == Overlays::Included || !variables[index].overlay)
            appendOccupied(variables[index], index, &occupied);
    }
    sortByPlace(&occupied);
    return occupied;
}

} // namespace

qint64 elementSize(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->size;
    if (variable.type->format == values::ValueFormat::Text)
        return qint64(variable.stringLength) + 1;
    if (variable.type->format == values::ValueFormat::WideText)
        return 2 * (qint64(variable.stringLength) + 1);
    return variable.type->size;
}

qint64 elementStride(const Variable& variable)
{
    if (variable.structure)
        return variable.structure->size;
    Q_ASSERT(variable.type);
    if (values::isText(*variable.type))
        return kTextElementStride;
    return values::isBit(*variable.type) ? 1 : variable.type->size;
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
    if (variable.type && values::isBit(*variable.type)) {
        const qint64 words =
            (variable.offset % kBitsPerWord + count + kBitsPerWord - 1) / kBitsPerWord;
        return variable.offset / kBitsPerWord + kBytesPerWord * words;
    }
    const qint64 size = (count - 1) * elementStride(variable) + elementSize(variable);
    // Text elements lie an odd number of bytes apart, and several are moved in 16-bit registers.
    const bool isTextArray = variable.type && values::isText(*variable.type) && count > 1;
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
    return findSharedMemory(std::vector<QVector<Variable>>{variables});
}

std::optional<SharedMemory> findSharedMemory(const std::vector<QVector<Variable>>& lists)
{
    std::vector<Occupied> occupied;
    int owner = 0;
    for (const QVector<Variable>& variables : lists) {
        for (const Variable& variable : variables) {
            if (!variable.overlay)
                appendOccupied(variable, owner, &occupied);
            ++owner;
        }
    }
    sortByPlace(&occupied);
    const Occupied* reachesFarthest = nullptr;
    for (const Occupied& next : occupied) {
        if (reachesFarthest && reachesFarthest->area == next.area &&
            next.first < reachesFarthest->end) {
            return SharedMemory{std::min(reachesFarthest->owner, next.owner),
                                std::max(reachesFarthest->owner, next.owner),
                                next.first / kBitsPerByte};
        }
        reachesFarthest = &next;
    }
    return {};
}

QVector<SharedMemory> coveredVariables(const QVector<Variable>& variables)
{
    const std::vector<Occupied> occupied = occupiedMemory(variables, Overlays::LeftOut);
    QVector<SharedMemory> covered;
    QSet<int> owners;
    const Occupied* reachesFarthest = nullptr;
    for (const Occupied& next : occupied) {
        if (!reachesFarthest || reachesFarthest->area != next.area ||
            next.first >= reachesFarthest->end) {
            reachesFarthest = &next;
        } else if (reachesFarthest->owner != next.owner && !owners.contains(next.owner)) {
            owners.insert(next.owner);
            covered.append({reachesFarthest->owner, next.owner, next.first / kBitsPerByte});
        }
    }
    return covered;
}

QVector<SharedMemory> allSharedMemory(const QVector<Variable>& variables, int limit)
{
    QVector<SharedMemory> shared;
    QSet<QPair<int, int>> pairs;
    std::vector<Occupied> before; // Those that reach to the next one.
    for (const Occupied& next : occupiedMemory(variables, Overlays::Included)) {
        const auto endsBefore = [&next](const Occupied& other) {
            return other.area != next.area || other.end <= next.first;
        };
        before.erase(std::remove_if(before.begin(), before.end(), endsBefore), before.end());
        for (const Occupied& other : before) {
            const int first = std::min(other.owner, next.owner);
            const int second = std::max(other.owner, next.owner);
            if (first == second || pairs.contains({first, second}))
                continue;
            if (int(shared.size()) >= limit)
                return shared;
            pairs.insert({first, second});
            shared.append({first, second, next.first / kBitsPerByte});
        }
        before.push_back(next);
    }
    return shared;
}

QVector<MemoryGap> memoryGaps(const QVector<Variable>& variables, const QVector<MemoryArea>& areas,
                              qint64 smallest)
{
    const std::vector<Occupied> occupied = occupiedMemory(variables, Overlays::Included);
    QVector<MemoryGap> gaps;
    for (const MemoryArea& area : areas) {
        qint64 end = 0;
        const auto append = [&](qint64 next) {
            if (next - end >= std::max(qint64(1), smallest))
                gaps.append({area.index, end, next});
        };
        auto it =
            std::lower_bound(occupied.begin(), occupied.end(), area.index,
                             [](const Occupied& place, int index) { return place.area < index; });
        for (; it != occupied.end() && it->area == area.index; ++it) {
            append(it->first / kBitsPerByte);
            end = std::max(end, (it->end + kBitsPerByte - 1) / kBitsPerByte);
        }
        append(area.size);
    }
    return gaps;
}

} // namespace plc::project
