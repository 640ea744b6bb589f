#ifndef PLC_TESTS_FAULTS_STAMPED_PLC_H
#define PLC_TESTS_FAULTS_STAMPED_PLC_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <vector>

#include "faults/plant.h"

namespace plc::faults {

/// Bytes of PLC memory.
struct Range {
    int area = 0;
    quint32 address = 0;
    quint32 size = 0;

    bool holds(const Range& other) const
    {
        return area == other.area && address <= other.address &&
               other.address + other.size <= address + size;
    }
    bool meets(const Range& other) const
    {
        return area == other.area && address < other.address + other.size &&
               other.address < address + size;
    }
};

/// What an array takes of the memory.
Range rangeOf(const Array& array);

/// The bytes of a range as the reply of this number carries them. Every byte at an even address is
/// another one in each of 256 successive replies, every word in each of 65,536.
QByteArray stampedBytes(const Range& range, quint32 generation);

/// A good reply to a read.
struct StampedReply {
    quint32 generation = 0;
    int connection = 0;
    qint64 requestedAt = 0;
    QVector<Range> ranges;

    /// Whether it has all these bytes, in however many of its ranges.
    bool carries(const Range& range) const;
};

/// One value of a write request that reached the PLC.
struct ReceivedValue {
    qint64 at = 0;
    int area = 0;
    quint32 address = 0; ///< In bits for a bit.
    bool isBit = false;
    QByteArray data;
    bool isTaken = false;
};

/// What a PLC answered and what it took, in the order in which it happened.
struct PlcRecord {
    std::vector<StampedReply> replies;
    std::vector<ReceivedValue> values;
};

/// A PLC whose memory is another one in each reply, and which keeps a record of all that it did.
/// What is written to it is kept in the record alone: a value that shows it was not read.
class StampedPlc {
public:
    /// A PLC that answers the two frames of the login with so many bytes of payload.
    StampedPlc(int identificationSize, int fileSize)
        : m_identificationSize(identificationSize), m_fileSize(fileSize)
    {
    }

    /// Further requests come on a new connection, whose number this is.
    int openConnection() { return ++m_connection; }
    /// The reply to a request that the host sent at this time.
    QByteArray answer(const QByteArray& request, qint64 requestedAt);
    const PlcRecord& record() const { return m_record; }

    /// From now on each request that reads, or writes, one of these bytes is refused as a whole.
    void refuseReads(const QVector<Range>& ranges) { m_refusedReads = ranges; }
    void refuseWrites(const QVector<Range>& ranges) { m_refusedWrites = ranges; }

private:
    QByteArray answerRead(const QByteArray& request, qint64 requestedAt);
    QByteArray answerWrite(const QByteArray& request, qint64 requestedAt);

    const int m_identificationSize;
    const int m_fileSize;
    int m_connection = 0;
    quint32 m_generation = 0;
    QVector<Range> m_refusedReads;
    QVector<Range> m_refusedWrites;
    PlcRecord m_record;
};

} // namespace plc::faults

#endif
