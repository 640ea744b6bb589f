#include "gateway/service/audit_trail.h"

#include <utility>

namespace plc::gateway {
namespace {

constexpr std::size_t kMostWaitingRefusals = 1000;

} // namespace

AuditTrail::AuditTrail(Append append, Problem problem)
    : m_append(std::move(append)), m_problem(std::move(problem))
{
}

bool AuditTrail::append(const WriteOutcome& line)
{
    const Expected<void> written = m_append(line);
    m_appendError = written ? QString() : written.error().text;
    return bool(written);
}

bool AuditTrail::appendWaiting()
{
    while (!m_waiting.empty() && append(m_waiting.front()))
        m_waiting.pop_front();
    return m_waiting.empty();
}

/// Behind all that waits.
bool AuditTrail::addInTurn(const WriteOutcome& line)
{
    return appendWaiting() && append(line);
}

bool AuditTrail::permits(const WriteOutcome& requested)
{
    return m_problem().isEmpty() && addInTurn(requested);
}

void AuditTrail::addOutcome(const WriteOutcome& outcome)
{
    if (!addInTurn(outcome))
        m_waiting.push_back(outcome);
}

void AuditTrail::addRefusal(const WriteOutcome& refusal)
{
    if (addInTurn(refusal))
        return;
    if (m_waiting.size() < kMostWaitingRefusals)
        m_waiting.push_back(refusal);
    else
        countRefusal();
}

void AuditTrail::secondPassed(qint64 time)
{
    if (!appendWaiting() || m_countedRefusals == 0)
        return;
    WriteOutcome together;
    together.kind = WriteOutcome::Refused;
    together.time = time;
    together.reason =
        QStringLiteral("so many requests were refused without a line of their own: %1")
            .arg(m_countedRefusals);
    if (append(together))
        m_countedRefusals = 0;
}

QString AuditTrail::error() const
{
    return m_appendError.isEmpty() ? m_problem() : m_appendError;
}

} // namespace plc::gateway
