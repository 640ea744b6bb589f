#ifndef PLC_HOST_PROJECT_MEMORY_LAYOUT_H
#define PLC_HOST_PROJECT_MEMORY_LAYOUT_H

#include <QtCore/QVector>

#include <optional>

#include "host/project/project.h"

namespace plc {

/// Distance in bytes of the elements of a STRING or WSTRING array.
constexpr int kTextElementStride = 255;

/// Bytes that one element occupies: a text its characters and the terminating zero, a BIT none of
/// its own.
qint64 elementSize(const Variable& variable);

/// Distance of one array element to the next in bytes; in bits for BIT.
qint64 elementStride(const Variable& variable);

/// Elements of all dimensions together; 1 for what is no array.
qint64 elementCount(const Variable& variable);

/// Elements that lie before the one with these subscripts, one for each dimension and within its
/// bounds.
qint64 elementIndex(const QVector<ArrayDimension>& dimensions, const QVector<qint64>& subscripts);

/// One past the last byte that reading the variable touches. Bits travel in whole 16-bit words,
/// arrays of texts in whole 16-bit registers.
qint64 transferEnd(const Variable& variable);

/// Bit `offset & 15` of the 16-bit word whose high byte is at `offset >> 4` and whose low byte is
/// behind it: neighbouring words share a byte.
struct BitPlace {
    qint64 byte;
    int bit;
};
BitPlace bitPlace(qint64 offset);

/// Two of `variables` that share memory, or the same one twice when its own elements do. Variables
/// marked as overlay are left out.
struct SharedMemory {
    int first;
    int second;
    qint64 byte;
};
std::optional<SharedMemory> findSharedMemory(const QVector<Variable>& variables);

} // namespace plc

#endif
