#include "panel/access/audit_file.h"

namespace plc::panel {

Expected<void> AuditFile::open(qint64 time)
{
    if (m_log)
        return {};
    Expected<std::unique_ptr<AuditLog>> log = AuditLog::open(m_path, time);
    if (!log)
        return log.error();
    m_log = std::move(*log);
    m_flaw = m_log->flaw();
    return {};
}

AuditAppended AuditFile::append(const QVector<AuditRecord>& records)
{
    if (records.isEmpty())
        return {};
    if (const Expected<void> isOpen = open(records.first().time); !isOpen)
        return {0, isOpen.error()};
    return m_log->append(records);
}

Expected<void> AuditFile::reopen(qint64 time)
{
    return m_log ? m_log->reopen(time) : open(time);
}

} // namespace plc::panel
