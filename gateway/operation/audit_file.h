#ifndef PLC_GATEWAY_OPERATION_AUDIT_FILE_H
#define PLC_GATEWAY_OPERATION_AUDIT_FILE_H

#include <QtCore/QVector>

#include <memory>

#include "gateway/model/write_request.h"
#include "gateway/operation/disk_sync.h"
#include "values/expected.h"

namespace plc::gateway {

/// What came of a write that a consumer asked for.
struct AuditRecord {
    qint64 time = 0; ///< Milliseconds since 1970-01-01T00:00:00Z.
    QString device;
    QString label;
    QString value; ///< As WriteOutcome::value.
    WriteOutcome::Kind outcome = WriteOutcome::Refused;
    QString reason;
    QString id;
    QString topic; ///< Of the message that asked for it.
};

/// {"time":"2026-11-22T08:00:00.000Z","device":…,"label":…,"value":…,"outcome":"done","reason":…,
/// "id":…,"topic":…}, without an end of line; control characters escaped.
QByteArray auditLine(const AuditRecord& record);

/// A file to which each write that was asked for adds a line. Nothing is ever taken away from it.
///
/// A line is the system's before append() returns, so that it outlives the process, and soon after
/// bringOntoDisk() on the disk: call that once a second. Writes that could not be recorded should
/// not be carried out. For one thread.
class AuditFile {
public:
    /// Makes the file, readable by owner and group alone, or goes on with it. On a disk without any
    /// room for it, it is made when there is.
    static Expected<std::unique_ptr<AuditFile>> open(const QString& path,
                                                     DiskSync::Sync sync = gateway::bringOntoDisk);
    /// Returns when all of it is on the disk, or was refused.
    ~AuditFile();
    AuditFile(const AuditFile&) = delete;
    AuditFile& operator=(const AuditFile&) = delete;

    /// An error means that not all of the lines are in the file.
    Expected<void> append(const QVector<AuditRecord>& records);
    /// Has the disk take what was appended, and waits for nothing. `now` is milliseconds of a clock
    /// that never goes back.
    void bringOntoDisk(qint64 now);
    /// Goes on with a file of the same name, after the one until now was renamed, which comes onto
    /// the disk as well. After an error it is still that one.
    Expected<void> reopen();
    /// Why lines may not come onto the disk; empty: nothing is known of that kind. What append()
    /// returned is not part of it.
    const QString& problem() const { return m_problem; }

private:
    AuditFile(const QString& path, int file, DiskSync::Sync sync);

    bool hasFile();
    QString failureText(const char* what, int reason) const;
    bool writeAll(const QByteArray& bytes);
    void beginSync();
    void takeSyncResult();

    QString m_path;
    int m_file;              ///< -1: it could not be made.
    bool m_isInLine = false; ///< What stands last in the file is only the beginning of a line.
    bool m_isDirty = false;
    qint64 m_syncSeenAt = -1; ///< The one that runs; -1: none does.
    QString m_problem;
    DiskSync m_sync;
};

} // namespace plc::gateway

#endif
