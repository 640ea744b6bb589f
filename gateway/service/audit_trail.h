#ifndef PLC_GATEWAY_SERVICE_AUDIT_TRAIL_H
#define PLC_GATEWAY_SERVICE_AUDIT_TRAIL_H

#include <QtCore/QString>

#include <deque>
#include <functional>

#include "gateway/model/write_request.h"
#include "values/expected.h"

namespace plc::gateway {

/// What writes leave behind in the audit file, also while that takes nothing.
///
/// 1. Lines stand there in the order in which they came. What the file does not take waits in
///    memory and goes before everything else.
/// 2. While something waits, or the disk does not take what is in the file, no write is permitted.
///    So no more outcomes of writes wait than were under way when that began.
/// 3. Of refusals only so many wait; the others are counted, and have one line together.
class AuditTrail {
public:
    using Append = std::function<Expected<void>(const WriteOutcome&)>;
    using Problem = std::function<QString()>;

    /// `append` returns when the line is in the file, `problem` tells why what is there may not be
    /// on the disk; empty: it is, or soon will be.
    AuditTrail(Append append, Problem problem);

    /// That a write is about to be sent. Returns whether it may be.
    bool permits(const WriteOutcome& requested);
    /// How a write that was permitted ended.
    void addOutcome(const WriteOutcome& outcome);
    /// That a write was not permitted.
    void addRefusal(const WriteOutcome& refusal);
    /// That one was not permitted, without a line of its own.
    void countRefusal() { ++m_countedRefusals; }
    /// Adds the line of those that were counted, and what waits.
    void secondPassed(qint64 time);

    /// Why nothing is permitted; empty: it is.
    QString error() const;
    /// How many lines wait.
    quint64 waiting() const { return quint64(m_waiting.size()); }

private:
    bool append(const WriteOutcome& line);
    bool appendWaiting();
    bool addInTurn(const WriteOutcome& line);

    const Append m_append;
    const Problem m_problem;
    QString m_appendError;
    std::deque<WriteOutcome> m_waiting;
    quint64 m_countedRefusals = 0;
};

} // namespace plc::gateway

#endif
