#ifndef PLC_PROJECT_MEMORY_LAYOUT_H
#define PLC_PROJECT_MEMORY_LAYOUT_H

#include <QtCore/QVector>

#include <limits>
#include <optional>
#include <vector>

#include "project/symbols.h"
#include "values/export.h"

namespace plc::project {

constexpr int kBitsPerByte = 8;
constexpr int kBitsPerWord = 16;
constexpr int kRegisterSize = 2; ///< Bytes of a 16-bit register.

/// Offsets and sizes are 32-bit numbers.
constexpr qint64 kHighestOffset = std::numeric_limits<qint32>::max();

/// Distance in bytes of the elements of a STRING or WSTRING array.
constexpr int kTextElementStride = 255;

/// Bytes that one element occupies: a text its characters and the terminating zero, a BIT none of
/// its own.
PLC_HOST_EXPORT qint64 elementSize(const Variable& variable);

/// Distance of one array element to the next in bytes; in bits for BIT.
PLC_HOST_EXPORT qint64 elementStride(const Variable& variable);

/// Elements of all dimensions together; 1 for what is no array.
PLC_HOST_EXPORT qint64 elementCount(const Variable& variable);

/// Elements that lie before the one with these subscripts, one for each dimension and within its
/// bounds.
PLC_HOST_EXPORT qint64 elementIndex(const QVector<ArrayDimension>& dimensions,
                                    const QVector<qint64>& subscripts);

/// One past the last byte that reading the variable touches. Bits travel in whole 16-bit words,
/// arrays of texts in whole 16-bit registers.
PLC_HOST_EXPORT qint64 transferEnd(const Variable& variable);

/// Bit `offset & 15` of the 16-bit word whose high byte is at `offset >> 4` and whose low byte is
/// behind it: neighbouring words share a byte.
struct BitPlace {
    qint64 byte;
    int bit;
};
PLC_HOST_EXPORT BitPlace bitPlace(qint64 offset);

/// Two of `variables` that share memory, or the same one twice when its own elements do. Variables
/// marked as overlay are left out.
struct SharedMemory {
    int first;
    int second;
    qint64 byte;
};
PLC_HOST_EXPORT std::optional<SharedMemory> findSharedMemory(const QVector<Variable>& variables);

/// The same of variables that lie in several lists; `first` and `second` count through all of them.
PLC_HOST_EXPORT std::optional<SharedMemory> findSharedMemory(
    const std::vector<QVector<Variable>>& lists);

/// The variables that lie over others, each once: `second` over `first`, which begins before it or
/// is the larger one. Without the second ones nothing is shared. Overlays are left out.
PLC_HOST_EXPORT QVector<SharedMemory> coveredVariables(const QVector<Variable>& variables);

/// Every two different variables that share memory, overlays too, in the order of memory; at most
/// `limit` of them.
PLC_HOST_EXPORT QVector<SharedMemory> allSharedMemory(const QVector<Variable>& variables,
                                                      int limit);

/// Bytes of an area that no variable holds.
struct MemoryGap {
    int area;
    qint64 first;
    qint64 end;
};

/// The gaps of at least `smallest` bytes, the ends of the areas too, in the order of memory.
PLC_HOST_EXPORT QVector<MemoryGap> memoryGaps(const QVector<Variable>& variables,
                                              const QVector<MemoryArea>& areas, qint64 smallest);

} // namespace plc::project

#endif
