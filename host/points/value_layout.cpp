#include "host/points/value_layout.h"

#include "host/wire/read_limits.h"
#include "project/memory_layout.h"

namespace plc::host {
namespace {

/// Bytes from the first character of the first text to the last of the last one, rounded up to
/// whole registers: with the terminating zero where the number would be odd.
int textBytes(const DataPoint& point)
{
    const bool isWide = point.type->format == values::ValueFormat::WideText;
    const int last = point.stringLength * (isWide ? 2 : 1);
    const int bytes = (point.elements - 1) * project::kTextElementStride + last;
    return bytes + bytes % project::kRegisterSize;
}

int bitWords(const DataPoint& point)
{
    return (point.address % project::kBitsPerWord + point.elements + project::kBitsPerWord - 1) /
           project::kBitsPerWord;
}

} // namespace

ByteRange valueBytes(const DataPoint& point)
{
    ByteRange range;
    range.area = point.area;
    if (values::isBit(*point.type)) {
        range.start = quint32(point.address / project::kBitsPerWord);
        range.size = quint32(bitWords(point) + 1);
    } else if (values::isText(*point.type)) {
        range.start = quint32(point.address);
        range.size = quint32(textBytes(point));
    } else {
        range.start = quint32(point.address);
        range.size = quint32(point.elements * point.type->size);
    }
    return range;
}

quint32 elementBytes(const DataPoint& point)
{
    if (values::isText(*point.type))
        return point.elements > 1 ? quint32(project::kTextElementStride) : 1;
    return quint32(qMax(1, point.type->size));
}

quint32 pieceBytes(const DataPoint& point, int maxReadBytes)
{
    const quint32 element = elementBytes(point);
    return qMax<quint32>(1, quint32(maxReadBytes) / element) * element;
}

QVector<FrameEntry> oneShotPieces(const DataPoint& point, int maxReadBytes)
{
    const ByteRange bytes = valueBytes(point);
    const bool isWhole = qint64(bytes.size) <= longestEntry(maxReadBytes);
    const quint32 pieceSize = isWhole ? bytes.size : pieceBytes(point, maxReadBytes);
    QVector<FrameEntry> pieces;
    for (quint32 done = 0; done < bytes.size; done += pieceSize) {
        FrameEntry piece;
        piece.area = quint16(point.area);
        piece.address = bytes.start + done;
        piece.length = qMin(pieceSize, bytes.size - done);
        pieces.append(piece);
    }
    return pieces;
}

WritePieces::WritePieces(const DataPoint& point, int byteCount)
    : m_area(quint16(point.area)),
      m_isBit(values::isBit(*point.type)),
      m_address(quint32(point.address)),
      m_byteCount(byteCount),
      m_pieceSize(m_isBit ? 1 : PLC_WRITE_PIECE)
{
}

FramePlace WritePieces::at(int index) const
{
    const int position = index * m_pieceSize;
    const int length = qMin(m_pieceSize, m_byteCount - position);
    return {m_area, m_address + quint32(position), quint32(length), m_isBit};
}

} // namespace plc::host
