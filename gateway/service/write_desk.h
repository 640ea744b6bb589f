#ifndef PLC_GATEWAY_SERVICE_WRITE_DESK_H
#define PLC_GATEWAY_SERVICE_WRITE_DESK_H

#include <QtCore/QString>

#include <functional>
#include <map>

#include "gateway/devices/write_target.h"
#include "gateway/model/write_request.h"
#include "gateway/service/audit_trail.h"

namespace plc::gateway {

struct WriteCounts {
    quint64 done = 0;
    quint64 refused = 0;
    quint64 unknown = 0;

    void count(WriteOutcome::Kind kind);
};

/// Decides on the writes that consumers ask for, and tells how each ended.
///
/// 1. Only metrics that the configuration lists are written, and only within their limits.
/// 2. Each request for what is writable has exactly one outcome, which goes to the audit and then
///    to `tell`.
/// 3. What is sent to a PLC goes to the audit before; where that fails, nothing is sent. So there
///    is a trace of a write whose outcome this process did not live to see.
/// 4. A flood of requests is cut off: more than a few open writes for a PLC are refused. Requests
///    for what is not writable are nobody's right: only so many a second have an outcome, and those
///    for what is not there no line of the audit; the rest is counted.
class WriteDesk {
public:
    using Tell = std::function<void(const WriteOutcome&)>;
    using Clock = std::function<qint64()>;

    /// `time` gives milliseconds since 1970-01-01T00:00:00Z.
    WriteDesk(AuditTrail audit, Tell tell, Clock time);

    /// `target` is null where there is no such device.
    void take(const WriteRequest& request, WriteTarget* target);
    /// Lets refusals of another second be told, and the audit have what it has not.
    void secondPassed();

    /// How many ended how, since the start: of all, and of one device.
    const WriteCounts& counts() const { return m_counts; }
    WriteCounts counts(int device) const;
    /// Requests for what is not writable that were refused without an outcome.
    quint64 flooded() const { return m_flooded; }
    const AuditTrail& audit() const { return m_audit; }

private:
    QString obstacle(const WriteRequest& request, const WriteTarget* target) const;
    WriteOutcome refusalOf(WriteOutcome outcome, const QString& reason) const;
    void refuse(const WriteOutcome& outcome, const QString& reason);
    void refuseStranger(const WriteOutcome& outcome, const QString& reason, bool isKnown);
    void settle(WriteOutcome outcome, const Metric& metric, const host::TransferOutcome& ending);
    void tell(const WriteOutcome& outcome);

    AuditTrail m_audit;
    const Tell m_tell;
    const Clock m_time;
    int m_refusalsLeft;
    WriteCounts m_counts;
    std::map<int, WriteCounts> m_countsByDevice;
    quint64 m_flooded = 0;
};

} // namespace plc::gateway

#endif
