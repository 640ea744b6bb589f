#include "panel/access/login_audit.h"

namespace plc::panel {
namespace {

AuditRecord recordOf(const QString& user, const QString& address)
{
    AuditRecord record;
    record.action = QStringLiteral("login");
    record.phase = AuditRecord::Outcome;
    record.user = user.left(UsersFile::kLongestName);
    record.address = address;
    record.outcome = QStringLiteral("refused");
    return record;
}

} // namespace

std::optional<AuditRecord> LoginAudit::attempted(const QString& user, const QString& address,
                                                 const LoginResult& result, qint64 now)
{
    AuditRecord record = recordOf(user, address);
    if (result.kind == LoginResult::Done) {
        record.outcome = QStringLiteral("done");
        return record;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool isWrong = result.kind == LoginResult::Wrong;
    if (isWrong && m_failures.wait(QString(), now) == 0) {
        m_failures.fill(QString(), now);
        record.reason = QStringLiteral("the user or the password is wrong");
        return record;
    }
    if (m_wrong + m_tooOften == 0)
        m_since = now;
    ++(isWrong ? m_wrong : m_tooOften);
    m_last = record;
    return std::nullopt;
}

std::optional<AuditRecord> LoginAudit::passTime(qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return now - m_since >= kCountFor ? takeCounted() : std::nullopt;
}

std::optional<AuditRecord> LoginAudit::finish()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return takeCounted();
}

/// User and address are those of the last one: all of them would be as many as whoever tries likes.
std::optional<AuditRecord> LoginAudit::takeCounted()
{
    if (m_wrong + m_tooOften == 0)
        return std::nullopt;
    AuditRecord record = m_last;
    record.reason = QStringLiteral(
                        "%1 attempts that are not told one by one: %2 with a wrong user "
                        "or password, %3 too often; these are user and address of the "
                        "last")
                        .arg(m_wrong + m_tooOften)
                        .arg(m_wrong)
                        .arg(m_tooOften);
    m_wrong = 0;
    m_tooOften = 0;
    return record;
}

} // namespace plc::panel
