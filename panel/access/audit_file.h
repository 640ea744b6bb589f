#ifndef PLC_PANEL_ACCESS_AUDIT_FILE_H
#define PLC_PANEL_ACCESS_AUDIT_FILE_H

#include "panel/access/audit_log.h"

namespace plc::panel {

/// What an AuditWriter brings records into. For one thread at a time; each function may wait for
/// the disk.
class AuditMedium {
public:
    virtual ~AuditMedium() = default;

    /// As those of AuditLog.
    virtual AuditAppended append(const QVector<AuditRecord>& records) = 0;
    virtual Expected<void> reopen(qint64 time) = 0;
    /// What is wrong with the end of a file that was gone on with since the last call; empty:
    /// nothing.
    virtual QString takeFlaw() = 0;
};

/// The file of an audit. One for which the disk had no room is begun once it has.
class AuditFile : public AuditMedium {
public:
    explicit AuditFile(const QString& path) : m_path(path) {}

    /// Makes the file or goes on with it. After an error it is tried again with each append().
    Expected<void> open(qint64 time);

    AuditAppended append(const QVector<AuditRecord>& records) override;
    Expected<void> reopen(qint64 time) override;
    QString takeFlaw() override { return std::exchange(m_flaw, {}); }

private:
    const QString m_path;
    std::unique_ptr<AuditLog> m_log; ///< Null: not begun yet.
    QString m_flaw;
};

} // namespace plc::panel

#endif
