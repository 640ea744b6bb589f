#include "project/value_limits.h"

#include "project/memory_layout.h"
#include "values/iec_types.h"

namespace plc::project {
namespace {

constexpr qint64 kBytesPerMebibyte = qint64(1024) * 1024;

} // namespace

qint64 transferBytes(const Variable& variable, qint64 elements)
{
    if (values::isBit(*variable.type)) {
        const qint64 bits = variable.offset % kBitsPerWord + elements;
        return (bits + kBitsPerWord - 1) / kBitsPerWord * kRegisterSize;
    }
    if (!values::isText(*variable.type))
        return elements * variable.type->size;
    const qint64 bytes = (elements - 1) * kTextElementStride + elementSize(variable);
    return bytes + bytes % kRegisterSize;
}

qint64 bufferBytes(const Variable& variable, qint64 elements)
{
    const bool isFlag = variable.type->format == values::ValueFormat::Boolean;
    return qMax(transferBytes(variable, elements),
                elements * (isFlag || values::isText(*variable.type) ? 1 : kRegisterSize));
}

qint64 transferPieces(const Variable& variable, qint64 elements, int maxReadBytes)
{
    return (transferBytes(variable, elements) + maxReadBytes - 1) / maxReadBytes;
}

Expected<void> checkValueLimits(const Variable& variable, qint64 elements, int maxReadBytes)
{
    const qint64 bytes = bufferBytes(variable, elements);
    if (bytes > kMostBytesOfValue) {
        return Error{
            QStringLiteral("%1 elements are %2 bytes as the driver reads them; one value has at "
                           "most %3 (%4 MiB)")
                .arg(elements)
                .arg(bytes)
                .arg(kMostBytesOfValue)
                .arg(kMostBytesOfValue / kBytesPerMebibyte)};
    }
    const qint64 pieces = transferPieces(variable, elements, maxReadBytes);
    if (pieces > kMostPiecesOfValue) {
        return Error{
            QStringLiteral("%1 elements fall into %2 pieces of at most %3 bytes (maxReadBytes); "
                           "one value has at most %4 pieces")
                .arg(elements)
                .arg(pieces)
                .arg(maxReadBytes)
                .arg(kMostPiecesOfValue)};
    }
    return {};
}

} // namespace plc::project
