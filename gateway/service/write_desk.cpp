#include "gateway/service/write_desk.h"

#include <algorithm>

#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::gateway {
namespace {

constexpr int kMostOpenWrites = 100;        // of one PLC
constexpr int kMostRefusalsPerSecond = 100; // of requests for what is not writable
constexpr int kLongestRefusedText = 256;    // of a value that is not writable, in the audit

bool isWithinLimits(const Metric& metric, const QVector<values::Value>& values)
{
    return std::all_of(values.begin(), values.end(), [&metric](const values::Value& value) {
        return metric.limits.contains(value);
    });
}

/// What strangers send fills no disk.
QString shortened(const QString& text)
{
    return int(text.size()) <= kLongestRefusedText
               ? text
               : text.left(kLongestRefusedText) + QStringLiteral("…");
}

} // namespace

void WriteCounts::count(WriteOutcome::Kind kind)
{
    done += kind == WriteOutcome::Done ? 1 : 0;
    refused += kind == WriteOutcome::Refused ? 1 : 0;
    unknown += kind == WriteOutcome::Unknown ? 1 : 0;
}

WriteDesk::WriteDesk(AuditTrail audit, Tell tell, Clock time)
    : m_audit(std::move(audit)),
      m_tell(std::move(tell)),
      m_time(std::move(time)),
      m_refusalsLeft(kMostRefusalsPerSecond)
{
}

WriteCounts WriteDesk::counts(int device) const
{
    const auto found = m_countsByDevice.find(device);
    return found == m_countsByDevice.end() ? WriteCounts() : found->second;
}

void WriteDesk::secondPassed()
{
    m_refusalsLeft = kMostRefusalsPerSecond;
    m_audit.secondPassed(m_time());
}

void WriteDesk::take(const WriteRequest& request, WriteTarget* target)
{
    WriteOutcome outcome;
    outcome.device = request.device;
    outcome.metric = request.metric;
    outcome.name = request.name;
    outcome.id = request.id;
    outcome.topic = request.topic;
    if (target)
        outcome.deviceName = target->description().name;
    if (target && request.metric >= 0) {
        const host::DataPoint& point = target->description().metrics[request.metric].point;
        outcome.label = point.text;
        if (!request.values.isEmpty())
            outcome.value = host::pointText(point, request.values);
    }
    const QString reason = obstacle(request, target);
    const bool isKnown = target && request.metric >= 0;
    if (!isKnown || !target->description().metrics[request.metric].isWritable) {
        refuseStranger(outcome, reason, isKnown);
        return;
    }
    if (!reason.isEmpty()) {
        refuse(outcome, reason);
        return;
    }
    outcome.kind = WriteOutcome::Requested;
    outcome.time = m_time();
    if (!m_audit.permits(outcome)) {
        refuse(outcome, QStringLiteral("the audit file cannot be written"));
        return;
    }
    const Metric metric = target->description().metrics[request.metric];
    target->write(request.metric, request.values,
                  [this, outcome, metric](const host::TransferOutcome& ending) {
                      settle(outcome, metric, ending);
                  });
}

/// Why the request is not carried out; empty if it is.
QString WriteDesk::obstacle(const WriteRequest& request, const WriteTarget* target) const
{
    if (!target)
        return QStringLiteral("there is no such device");
    if (request.metric < 0)
        return request.error.isEmpty() ? QStringLiteral("there is no such value") : request.error;
    const Metric& metric = target->description().metrics[request.metric];
    if (!metric.isWritable)
        return QStringLiteral("the configuration does not list it as writable");
    if (!request.error.isEmpty())
        return request.error;
    if (!isWithinLimits(metric, request.values))
        return QStringLiteral("out of the limits %1").arg(metric.limits.text());
    if (target->openWrites() >= kMostOpenWrites)
        return QStringLiteral("too many writes are under way");
    return QString();
}

WriteOutcome WriteDesk::refusalOf(WriteOutcome outcome, const QString& reason) const
{
    outcome.kind = WriteOutcome::Refused;
    outcome.reason = reason;
    outcome.time = m_time();
    return outcome;
}

void WriteDesk::refuse(const WriteOutcome& outcome, const QString& reason)
{
    const WriteOutcome refusal = refusalOf(outcome, reason);
    m_audit.addRefusal(refusal);
    tell(refusal);
}

/// A request for what is not writable, or, where nothing is known of it, not there.
void WriteDesk::refuseStranger(const WriteOutcome& outcome, const QString& reason, bool isKnown)
{
    if (m_refusalsLeft <= 0) {
        ++m_flooded;
        m_audit.countRefusal();
        return;
    }
    --m_refusalsLeft;
    WriteOutcome refusal = refusalOf(outcome, reason);
    refusal.value = shortened(outcome.value);
    if (isKnown)
        m_audit.addRefusal(refusal);
    else
        m_audit.countRefusal();
    tell(refusal);
}

void WriteDesk::settle(WriteOutcome outcome, const Metric& metric,
                       const host::TransferOutcome& ending)
{
    switch (ending.kind) {
        case host::TransferOutcome::Done:
            outcome.kind = WriteOutcome::Done;
            break;
        case host::TransferOutcome::LinkLost:
            outcome.kind = WriteOutcome::Unknown;
            break;
        case host::TransferOutcome::Refused:
        case host::TransferOutcome::NotSent:
            outcome.kind = WriteOutcome::Refused;
            break;
    }
    if (!ending.isDone())
        outcome.reason = host::writeOutcomeText(metric.point, ending);
    outcome.time = m_time();
    m_audit.addOutcome(outcome);
    tell(outcome);
}

void WriteDesk::tell(const WriteOutcome& outcome)
{
    m_counts.count(outcome.kind);
    m_countsByDevice[outcome.device].count(outcome.kind);
    m_tell(outcome);
}

} // namespace plc::gateway
