#include "lists/variable_lists.h"

#include <QtCore/QSet>

#include "base/wrapped_int.h"
#include "lists/length_conversion.h"

namespace {

/// The head of the write list may be under way: it is never replaced.
const int kFirstReplaceable = 1;

/// Bytes of the piece that begins `position` bytes into `total`.
qint64 pieceLength(qint64 total, qint64 position, qint64 pieceSize)
{
    return qMin(pieceSize, total - position);
}

/// Bytes of the last of the pieces of `total`.
qint64 lastPieceLength(qint64 total, qint64 pieceSize)
{
    const qint64 rest = total % pieceSize;
    return rest != 0 ? rest : pieceSize;
}

bool isSameRange(const RW_VAR& a, const RW_VAR& b)
{
    // First what differs most often.
    return a.address == b.address && a.length == b.length && a.station == b.station;
}

bool isSameRead(const RW_VAR& a, const RW_VAR& b)
{
    return isSameRange(a, b) && a.category == b.category && a.aux1 == b.aux1 &&
           a.deviceNo == b.deviceNo && a.dataType == b.dataType && a.areaIndex == b.areaIndex;
}

/// The place of the queued write that `write` replaces; behind all others where there is none.
int findReplaceable(const QList<RW_VAR>& list, const RW_VAR& write)
{
    if (list.size() <= kFirstReplaceable)
        return int(list.size());
    const QList<RW_VAR>::const_iterator end = list.constEnd();
    QList<RW_VAR>::const_iterator each = list.constBegin() + kFirstReplaceable;
    while (each != end && !isSameRange(*each, write))
        ++each;
    return int(each - list.constBegin());
}

bool isListed(const QList<RW_VAR>& list, const RW_VAR& read)
{
    const QList<RW_VAR>::const_iterator end = list.constEnd();
    for (QList<RW_VAR>::const_iterator each = list.constBegin(); each != end; ++each) {
        if (isSameRead(*each, read))
            return true;
    }
    return false;
}

/// Replaces those entries of a full write list that one of the pieces from `position` on would
/// replace. Walks the list once, however many pieces there are.
void replaceQueuedPieces(QList<RW_VAR>& list, const RW_VAR& record, const QByteArray& bytes,
                         int position, int pieceSize)
{
    QSet<quint32> replaced;
    for (int i = kFirstReplaceable; i < int(list.size()); ++i) {
        const RW_VAR& queued = list.at(i);
        const quint32 offset = quint32(plc::advanced(queued.address, -qint64(record.address)));
        const bool isPiece = queued.station == record.station && offset >= quint32(position) &&
                             offset < quint32(bytes.size()) &&
                             (offset - quint32(position)) % quint32(pieceSize) == 0 &&
                             queued.length == pieceLength(bytes.size(), offset, pieceSize);
        if (!isPiece || replaced.contains(offset))
            continue;
        replaced.insert(offset);
        RW_VAR piece = record;
        piece.address = queued.address;
        piece.length = queued.length;
        piece.data = bytes.mid(int(offset), queued.length);
        list[i] = piece;
    }
}

} // namespace

namespace plc {

bool isWithinLimits(qint64 length, int pieceSize)
{
    return length <= PLC_LARGEST_VALUE && (length - 1) / pieceSize < PLC_MOST_PIECES;
}

void queueWrite(QList<RW_VAR>& list, const RW_VAR& write)
{
    const int replaced = findReplaceable(list, write);
    if (replaced < int(list.size()))
        list[replaced] = write;
    else if (list.size() < PLC_LIST_LIMIT)
        list.append(write);
}

void queueWritePieces(QList<RW_VAR>& list, const RW_VAR& record, const QByteArray& bytes,
                      int pieceSize)
{
    const int total = int(bytes.size());
    int position = 0;
    for (; position < total && list.size() < PLC_LIST_LIMIT; position += pieceSize) {
        RW_VAR piece = record;
        piece.address = advanced(record.address, position);
        piece.length = int(pieceLength(total, position, pieceSize));
        piece.data = bytes.mid(position, piece.length);
        queueWrite(list, piece);
    }
    if (position < total)
        replaceQueuedPieces(list, record, bytes, position, pieceSize);
}

bool toOneShotRead(RW_VAR& var, const ComInfo& settings, const LabelResolver& resolver)
{
    ControlInformationM place = ControlInformationM();
    if (resolver.resolve(var.label, place) != kResolved)
        return false;
    if (settings.multiStation == 0)
        var.station = settings.defaultStation;
    var.dataType = place.dataType;
    var.address = place.address;
    var.areaIndex = place.areaIndex;
    ReadRange range;
    if (!toReadRange(place, var.length, TextCount::Registers, range))
        return false;
    var.dataType = range.dataType;
    var.address = range.address;
    var.length = range.length;
    return settings.maxReadBytes > 0 && isWithinLimits(var.length, settings.maxReadBytes);
}

void addReadPieces(QList<RW_VAR>& list, RW_VAR& var, qint32 pieceSize)
{
    const qint64 total = var.length;
    const qint32 start = var.address;
    // A full list takes nothing more: the rest of a huge length is not walked.
    for (qint64 position = 0; position < total && list.size() < PLC_LIST_LIMIT;
         position += pieceSize) {
        var.address = advanced(start, position);
        var.length = qint32(pieceLength(total, position, pieceSize));
        if (!isListed(list, var))
            list.append(var);
    }
    var.address = advanced(start, total);
    var.length = qint32(lastPieceLength(total, pieceSize));
}

} // namespace plc

void WhetherGroup(int total, int maxLen, RW_VAR* var, QList<RW_VAR>* list)
{
    if (!var || !list || maxLen <= 0 || !plc::isWithinLimits(total, maxLen))
        return;
    if (total <= maxLen) {
        list->append(*var);
        return;
    }
    const qint32 start = var->address;
    for (qint64 position = 0; position < total; position += maxLen) {
        var->address = plc::advanced(start, position);
        var->length = qint32(pieceLength(total, position, maxLen));
        list->append(*var);
    }
}
