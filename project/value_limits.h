#ifndef PLC_PROJECT_VALUE_LIMITS_H
#define PLC_PROJECT_VALUE_LIMITS_H

#include "project/symbols.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::project {

/// What the driver reads or writes as one value at most; beyond it gives an empty buffer. These two
/// are told by its header too, which the simulator, a reader of projects as well, does not know.
constexpr qint64 kMostBytesOfValue = qint64(16) * 1024 * 1024;
/// Pieces of `maxReadBytes` bytes that a value may fall into; of more the driver reads none.
constexpr qint64 kMostPiecesOfValue = 65536;

/// All cyclic values together, which the host and the driver hold in memory.
constexpr qint64 kMostCyclicBytes = qint64(256) * 1024 * 1024;
constexpr qint64 kMostCyclicPieces = 1000000;

/// Values that structures may make, taken apart; an array of an elementary type counts as one.
constexpr qint64 kMostDeclaredValues = 1000000;

/// Bytes of PLC memory that so many elements of a variable of an elementary type take to read.
PLC_HOST_EXPORT qint64 transferBytes(const Variable& variable, qint64 elements);

/// The same in the driver's buffers, of which the host's has whole registers: two bytes for a BYTE.
PLC_HOST_EXPORT qint64 bufferBytes(const Variable& variable, qint64 elements);

/// Pieces that reading so many elements takes.
PLC_HOST_EXPORT qint64 transferPieces(const Variable& variable, qint64 elements, int maxReadBytes);

/// An error says why so many elements are too much for one value.
PLC_HOST_EXPORT Expected<void> checkValueLimits(const Variable& variable, qint64 elements,
                                                int maxReadBytes);

} // namespace plc::project

#endif
