#include "gateway/operation/audit_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDateTime>
#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

#include "values/utc_time.h"
#include "values/value_text.h"

namespace plc::gateway {
namespace {

constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP;
constexpr qint64 kLongestSync = 5000; // ms

int openFile(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    return ::open(name.constData(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, kMode);
}

/// Whether the file ends within a line, because a process or a disk did.
bool endsInLine(int file)
{
    struct stat status = {};
    char last = '\n';
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
        return false;
    return ::pread(file, &last, 1, status.st_size - 1) == 1 && last != '\n';
}

} // namespace

QByteArray auditLine(const AuditRecord& record)
{
    const std::pair<const char*, QString> fields[] = {{"time", values::utcTimeText(record.time)},
                                                      {"device", record.device},
                                                      {"label", record.label},
                                                      {"value", record.value},
                                                      {"outcome", outcomeWord(record.outcome)},
                                                      {"reason", record.reason},
                                                      {"id", record.id},
                                                      {"topic", record.topic}};
    QByteArray line;
    for (const auto& [name, text] : fields) {
        line += line.isEmpty() ? "{\"" : ",\"";
        line += name;
        line += "\":" + values::jsonText(text).toUtf8();
    }
    return line + '}';
}

AuditFile::AuditFile(const QString& path, int file, DiskSync::Sync sync)
    : m_path(path), m_file(file), m_isInLine(endsInLine(file)), m_sync(std::move(sync))
{
}

AuditFile::~AuditFile()
{
    if (m_isDirty)
        beginSync();
    if (m_file >= 0)
        ::close(m_file);
}

Expected<std::unique_ptr<AuditFile>> AuditFile::open(const QString& path, DiskSync::Sync sync)
{
    const int file = openFile(path);
    const int reason = errno;
    std::unique_ptr<AuditFile> audit(new AuditFile(path, file, std::move(sync)));
    if (file >= 0)
        return audit;
    const QString failure = audit->failureText("cannot be opened for writing", reason);
    if (reason != ENOSPC && reason != EDQUOT)
        return Error{failure};
    audit->m_problem = failure;
    return audit;
}

QString AuditFile::failureText(const char* what, int reason) const
{
    return QStringLiteral("%1: %2: %3")
        .arg(m_path, QLatin1String(what), QString::fromLocal8Bit(std::strerror(reason)));
}

/// Where it fails, errno tells why.
bool AuditFile::writeAll(const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(m_file, bytes.constData() + done, std::size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            break;
        done += count;
    }
    if (done > 0) {
        m_isInLine = bytes[int(done) - 1] != '\n';
        m_isDirty = true;
    }
    return done == bytes.size();
}

Expected<void> AuditFile::append(const QVector<AuditRecord>& records)
{
    QByteArray lines;
    for (const AuditRecord& record : records)
        lines += auditLine(record) + '\n';
    if (m_isInLine)
        lines.prepend('\n');
    if (!hasFile() || !writeAll(lines))
        return Error{failureText("cannot be written", errno)};
    return {};
}

/// Makes it where there was no room for it before.
bool AuditFile::hasFile()
{
    if (m_file >= 0)
        return true;
    m_file = openFile(m_path);
    if (m_file >= 0)
        m_problem.clear();
    return m_file >= 0;
}

/// Of what is in the file until now.
void AuditFile::beginSync()
{
    const int file = ::fcntl(m_file, F_DUPFD_CLOEXEC, 0);
    if (file < 0) {
        m_problem = failureText("cannot be brought onto the disk", errno);
        return;
    }
    m_isDirty = false;
    m_sync.begin(file);
}

void AuditFile::takeSyncResult()
{
    const std::optional<int> result = m_sync.takeResult();
    if (!result)
        return;
    m_problem.clear();
    if (*result == 0)
        return;
    m_problem =
        failureText("cannot be brought onto the disk, which may lack its last lines", *result);
    m_isDirty = m_file >= 0;
}

void AuditFile::bringOntoDisk(qint64 now)
{
    if (!hasFile())
        return;
    takeSyncResult();
    if (m_sync.running() > 0) {
        if (m_syncSeenAt < 0)
            m_syncSeenAt = now;
        else if (now - m_syncSeenAt > kLongestSync)
            m_problem = QStringLiteral("%1: the disk takes too long for it").arg(m_path);
        return;
    }
    m_syncSeenAt = m_isDirty ? now : -1;
    if (m_isDirty)
        beginSync();
}

Expected<void> AuditFile::reopen()
{
    const int file = openFile(m_path);
    if (file < 0)
        return Error{failureText("cannot be opened for writing", errno)};
    if (m_isDirty)
        beginSync();
    if (m_file >= 0)
        ::close(m_file);
    m_file = file;
    m_isInLine = endsInLine(file);
    return {};
}

} // namespace plc::gateway
