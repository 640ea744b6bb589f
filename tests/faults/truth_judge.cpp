#include "faults/truth_judge.h"

#include <algorithm>

#include "faults/frames.h"

namespace plc::faults {
namespace {

/// Bytes in which an element cannot be told from its neighbours.
int grain(const Array& array)
{
    return array.type == Array::Long ? 4 : 2;
}

} // namespace

QString TruthJudge::judgeValue(const ToldValue& told, int connection) const
{
    const Range range = rangeOf(told.array);
    if (told.values.size() != told.array.elements)
        return QStringLiteral("%1 is shown with %2 elements")
            .arg(wholeArray(told.array))
            .arg(told.values.size());
    const QByteArray memory = memoryOf(told.array, told.values);
    const bool mayBeMixed = range.size > kLargestWhole;
    const quint32 step = mayBeMixed ? quint32(grain(told.array)) : range.size;
    for (quint32 at = 0; at < range.size; at += step) {
        if (!isFromOneReply(told, {range.area, range.address + at, step},
                            memory.mid(int(at), int(step)), connection))
            return origin(told);
    }
    return QString();
}

bool TruthJudge::isFromOneReply(const ToldValue& told, const Range& range, const QByteArray& memory,
                                int connection) const
{
    // The youngest first, which it is as a rule.
    for (auto reply = m_record->replies.rbegin(); reply != m_record->replies.rend(); ++reply) {
        if (reply->requestedAt < told.readAt)
            return false;
        const bool isOfConnection = connection < 0 || reply->connection == connection;
        if (isOfConnection && reply->carries(range) &&
            stampedBytes(range, reply->generation) == memory)
            return true;
    }
    return false;
}

/// What is wrong with a value that is not as it is told to be, and which replies its bytes are
/// from.
QString TruthJudge::origin(const ToldValue& told) const
{
    const Range range = rangeOf(told.array);
    const QByteArray memory = memoryOf(told.array, told.values);
    const quint32 step = quint32(grain(told.array));
    QString text;
    QString last;
    int parts = 0;
    for (quint32 at = 0; at < range.size; at += step) {
        const QString part =
            originOf({range.area, range.address + at, step}, memory.mid(int(at), int(step)));
        if (part == last)
            continue;
        text += QStringLiteral("; from byte %1 on %2").arg(at).arg(part);
        last = part;
        ++parts;
    }
    const QString kind = parts > 1                           ? QStringLiteral("mixed")
                         : last.startsWith(QLatin1Char('r')) ? QStringLiteral("older")
                                                             : QStringLiteral("invented");
    return QStringLiteral("%1: %2, told to be from %3 ms")
               .arg(kind, wholeArray(told.array))
               .arg(told.readAt) +
           text;
}

QString TruthJudge::originOf(const Range& range, const QByteArray& memory) const
{
    for (auto reply = m_record->replies.rbegin(); reply != m_record->replies.rend(); ++reply) {
        if (reply->carries(range) && stampedBytes(range, reply->generation) == memory) {
            return QStringLiteral("reply %1 to the request at %2 ms on connection %3")
                .arg(reply->generation)
                .arg(reply->requestedAt)
                .arg(reply->connection);
        }
    }
    for (const ReceivedValue& value : m_record->values) {
        if (!value.isBit && value.area == range.area && value.data.contains(memory))
            return QStringLiteral("what was written at %1 ms").arg(value.at);
    }
    return QStringLiteral("no reply");
}

QString TruthJudge::judgeMisplacedValue(const ToldValue& told, int connection) const
{
    const QByteArray memory = memoryOf(told.array, told.values);
    for (auto reply = m_record->replies.rbegin(); reply != m_record->replies.rend(); ++reply) {
        if (connection >= 0 && reply->connection != connection)
            continue;
        QByteArray payload;
        for (const Range& range : reply->ranges)
            payload += '\0' + stampedBytes(range, reply->generation);
        if (payload.contains(memory))
            return QString();
    }
    if (rangeOf(told.array).size > kLargestWhole)
        return QString();
    return origin(told);
}

QString TruthJudge::judgeWrite(const PlannedWrite& write, const ToldWrite& told) const
{
    const int elements = int(write.values.size());
    int taken = 0;
    int arrived = 0;
    int takenInOrder = 0;
    for (int i = 0; i < elements; ++i) {
        const Arrived arrival = this->arrival(write, i, told.begunAt);
        arrived += int(arrival != Arrived::Never);
        taken += int(arrival == Arrived::Taken);
        takenInOrder += int(arrival == Arrived::Taken && takenInOrder == i);
    }
    const QString facts =
        QStringLiteral(": of its %1 elements %2 reached the PLC and %3 were taken")
            .arg(elements)
            .arg(arrived)
            .arg(taken);
    switch (told.outcome) {
        case ToldWrite::Done:
            if (taken < elements)
                return write.target + QStringLiteral(" is told to be done") + facts;
            break;
        case ToldWrite::NotSent:
            if (arrived > 0 && write.isUnmistakable)
                return write.target + QStringLiteral(" is told not to have been sent") + facts;
            break;
        case ToldWrite::Refused:
            if (told.elementsTaken >= 0 && write.isUnmistakable &&
                (told.elementsTaken != taken || taken != takenInOrder))
                return write.target +
                       QStringLiteral(" is told to be refused, its first %1 elements taken")
                           .arg(told.elementsTaken) +
                       facts;
            break;
        case ToldWrite::LinkLost:
            if (told.elementsTaken > takenInOrder && write.isUnmistakable)
                return write.target +
                       QStringLiteral(" is told to be broken off, its first %1 elements taken")
                           .arg(told.elementsTaken) +
                       facts;
            break;
    }
    return QString();
}

TruthJudge::Arrived TruthJudge::arrival(const PlannedWrite& write, int element,
                                        qint64 begunAt) const
{
    const WritePiece* piece = &write.pieces.first();
    int at = element * write.elementSize;
    while (at >= piece->data.size()) {
        at -= int(piece->data.size());
        ++piece;
    }
    const quint32 address = piece->address + (piece->isBit ? 0 : quint32(at));
    const QByteArray data = piece->data.mid(at, write.elementSize);
    Arrived arrival = Arrived::Never;
    for (auto value = m_record->values.rbegin(); value != m_record->values.rend(); ++value) {
        if (value->at < begunAt)
            break;
        const bool holdsIt =
            value->area == piece->area && value->isBit == piece->isBit &&
            value->address <= address &&
            value->data.mid(int(address - value->address), write.elementSize) == data;
        if (holdsIt && value->isTaken)
            return Arrived::Taken;
        if (holdsIt)
            arrival = Arrived::Refused;
    }
    return arrival;
}

} // namespace plc::faults
