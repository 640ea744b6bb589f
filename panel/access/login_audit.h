#ifndef PLC_PANEL_ACCESS_LOGIN_AUDIT_H
#define PLC_PANEL_ACCESS_LOGIN_AUDIT_H

#include <mutex>
#include <optional>

#include "panel/access/access.h"
#include "panel/access/audit_chain.h"

namespace plc::panel {

/// What of the attempts to log in goes into the audit: each that is done, failed ones one by one as
/// long as there are few, and of all others how many there were. Whoever tries passwords cannot
/// fill a disk with it.
///
/// Times are in ms, of a clock that never goes back; the records have none yet.
///
/// Thread safety: all functions may be called by any thread.
class LoginAudit {
public:
    static constexpr int kToldAtOnce = 60;     ///< Failures that are told one by one,
    static constexpr qint64 kTellNext = 10000; ///< and from there on one in this time.
    static constexpr qint64 kCountFor = 60000; ///< Until it is told how many the others were.

    LoginAudit() : m_failures({kToldAtOnce, kTellNext}) {}

    /// The record of an attempt; nothing for one that is only counted.
    std::optional<AuditRecord> attempted(const QString& user, const QString& address,
                                         const LoginResult& result, qint64 now);
    /// The record of those that were counted, when it is time. To be called now and then.
    std::optional<AuditRecord> passTime(qint64 now);
    /// The same at once: no more will come.
    std::optional<AuditRecord> finish();

private:
    std::optional<AuditRecord> takeCounted();

    std::mutex m_mutex; ///< Guards all below.
    LeakyBuckets m_failures;
    qint64 m_since = 0; ///< When the first of the counted ones was.
    int m_wrong = 0;
    int m_tooOften = 0;
    AuditRecord m_last; ///< Of the counted ones.
};

} // namespace plc::panel

#endif
