#ifndef PLC_TESTS_FAULTS_TRUTH_JUDGE_H
#define PLC_TESTS_FAULTS_TRUTH_JUDGE_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "faults/plant.h"
#include "faults/stamped_plc.h"

namespace plc::faults {

/// A value as a host told it.
struct ToldValue {
    Array array;
    QVector<values::Value> values;
    /// From when it is, as the host tells by its age, in the time of the PLC's record.
    qint64 readAt = 0;
};

/// How a host told that a write ended.
struct ToldWrite {
    enum Outcome { Done, Refused, LinkLost, NotSent } outcome = Done;
    /// Of one that was refused these and no others; of one that was broken off at least these. -1
    /// where the host does not tell.
    int elementsTaken = -1;
    qint64 begunAt = 0;
};

/// Compares what a host tells with what its PLC did. Each answer says what the lie is, and is empty
/// where there is none.
class TruthJudge {
public:
    /// The largest value that comes in one reply, in bytes.
    static constexpr quint32 kLargestWhole = 900;

    /// The record must outlive the judge, and may go on growing.
    explicit TruthJudge(const PlcRecord* record) : m_record(record) {}

    /// Whether the value was so in one reply on this connection whose request was not sent before
    /// the time that the value is told to be from. A larger value than kLargestWhole may be put
    /// together from several such replies. Connection -1: any.
    QString judgeValue(const ToldValue& told, int connection) const;
    /// Whether the bytes at least stand in one reply on this connection, wherever. More cannot be
    /// asked for when a second copy of a reply was taken for the reply to the next read: the
    /// protocol has nothing to tell them apart by.
    QString judgeMisplacedValue(const ToldValue& told, int connection) const;
    QString judgeWrite(const PlannedWrite& write, const ToldWrite& told) const;

private:
    bool isFromOneReply(const ToldValue& told, const Range& range, const QByteArray& memory,
                        int connection) const;
    QString origin(const ToldValue& told) const;
    QString originOf(const Range& range, const QByteArray& memory) const;
    enum class Arrived { Never, Refused, Taken };
    Arrived arrival(const PlannedWrite& write, int element, qint64 begunAt) const;

    const PlcRecord* const m_record;
};

} // namespace plc::faults

#endif
