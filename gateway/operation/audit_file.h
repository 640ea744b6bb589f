#ifndef PLC_GATEWAY_OPERATION_AUDIT_FILE_H
#define PLC_GATEWAY_OPERATION_AUDIT_FILE_H

#include <QtCore/QVector>

#include <memory>

#include "gateway/model/write_request.h"
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
/// A line is the system's before append() returns, so that it outlives the process, and on the disk
/// when sync() has returned: call that once a second. For one thread.
class AuditFile {
public:
    /// Makes the file, readable by owner and group alone, or goes on with it.
    static Expected<std::unique_ptr<AuditFile>> open(const QString& path);
    ~AuditFile();
    AuditFile(const AuditFile&) = delete;
    AuditFile& operator=(const AuditFile&) = delete;

    /// An error means that not all of the lines are in the file.
    Expected<void> append(const QVector<AuditRecord>& records);
    /// An error means that lines may be lost when the power is.
    Expected<void> sync();
    /// Goes on with a file of the same name, after the one until now was renamed. After an error it
    /// is still that one.
    Expected<void> reopen();
    /// Whether the last lines came into the file and onto the disk. Writes that could not be
    /// recorded should not be carried out.
    bool isWorking() const { return m_isWorking; }

private:
    AuditFile(const QString& path, int file);

    Error failure(const char* what);
    bool writeAll(const QByteArray& bytes);

    QString m_path;
    int m_file;
    bool m_isInLine = false; ///< What stands last in the file is only the beginning of a line.
    bool m_isDirty = false;
    bool m_isWorking = true;
};

} // namespace plc::gateway

#endif
