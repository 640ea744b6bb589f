#ifndef PLC_PANEL_ACCESS_AUDIT_LOG_H
#define PLC_PANEL_ACCESS_AUDIT_LOG_H

#include <QtCore/QVector>

#include <memory>
#include <mutex>

#include "panel/access/audit_chain.h"
#include "values/expected.h"

namespace plc::panel {

/// What became of records that were to be added one behind the other.
struct AuditAppended {
    int kept = 0; ///< The first of them, which are on the disk.
    /// Why the others are not known to be there; of use where there are any.
    Error failure;
};

/// A file to which each record adds a line that holds the hash of the line before. Nothing is ever
/// taken away from it, and only one process at a time adds to it.
///
/// Thread safety: all functions may be called by any thread.
class AuditLog {
public:
    /// Makes the file, readable by owner and group alone, or goes on with it. An error where
    /// another process has it, or where it is something else.
    static Expected<std::unique_ptr<AuditLog>> open(const QString& path, qint64 time);
    ~AuditLog();
    AuditLog(const AuditLog&) = delete;
    AuditLog& operator=(const AuditLog&) = delete;

    /// The record is on the disk when this returns. After an error it is not known to be there, and
    /// what it tells of must not be done. Goes on as reopen() does where the file was removed; one
    /// that was renamed is added to until reopen().
    Expected<void> append(const AuditRecord& record);
    /// The same of several, which the disk is waited for once. Those that had no room any more are
    /// not kept, and those before them are.
    AuditAppended append(const QVector<AuditRecord>& records);
    /// Goes on with a file of the same name, after the one until now was renamed; the chain goes
    /// on. After an error it is still that one.
    Expected<void> reopen(qint64 time);
    /// The hash of the last line: noted elsewhere, it shows whether lines were taken away at the
    /// end.
    QByteArray head() const;
    /// What is wrong with the end of the file that was gone on with; empty: nothing. What follows
    /// is chained to the last line that is one.
    QString flaw() const;
    /// Whether the last record came onto the disk.
    bool isWorking() const;
    const QString& path() const { return m_path; }

private:
    /// A file that is open, and where its chain stands.
    struct File {
        int descriptor = -1;
        QByteArray head;
        qint64 number = -1; ///< Of the last line; -1: there is none.
        QByteArray unended; ///< What stands behind the last line, and is none.
        QString flaw;       ///< Of what stands there.
    };

    explicit AuditLog(QString path) : m_path(std::move(path)) {}
    static Expected<File> openFile(const QString& path);
    static Expected<void> findEnd(const QString& path, File* file);
    static bool hasName(const File& file);
    Expected<void> change(qint64 time);
    Expected<void> begin(File* file, qint64 time, const File* before);
    Expected<void> makeReady(qint64 time);
    Expected<void> add(File* file, const QByteArray& line);
    AuditAppended addAll(File* file, const QVector<QByteArray>& lines);
    static void close(File* file);

    const QString m_path;
    mutable std::mutex m_mutex; ///< Guards all below.
    File m_file;
    bool m_isWorking = true;
};

} // namespace plc::panel

#endif
