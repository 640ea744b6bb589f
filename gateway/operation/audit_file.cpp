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

QString failureText(const QString& path, const char* what)
{
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    return QStringLiteral("%1: %2: %3").arg(path, QLatin1String(what), reason);
}

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

AuditFile::AuditFile(const QString& path, int file)
    : m_path(path), m_file(file), m_isInLine(endsInLine(file))
{
}

AuditFile::~AuditFile()
{
    ::close(m_file);
}

Expected<std::unique_ptr<AuditFile>> AuditFile::open(const QString& path)
{
    const int file = openFile(path);
    if (file < 0)
        return Error{failureText(path, "cannot be opened for writing")};
    return std::unique_ptr<AuditFile>(new AuditFile(path, file));
}

Error AuditFile::failure(const char* what)
{
    m_isWorking = false;
    return Error{failureText(m_path, what)};
}

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
    if (!writeAll(lines))
        return failure("cannot be written");
    m_isWorking = true;
    return {};
}

Expected<void> AuditFile::sync()
{
    if (!m_isDirty)
        return {};
    // Pipes and devices have no disk behind them.
    if (::fdatasync(m_file) != 0 && errno != EINVAL && errno != EROFS)
        return failure("cannot be brought onto the disk");
    m_isDirty = false;
    return {};
}

Expected<void> AuditFile::reopen()
{
    Expected<void> synced = sync();
    const int file = openFile(m_path);
    if (file < 0)
        return Error{failureText(m_path, "cannot be opened for writing")};
    ::close(m_file);
    m_file = file;
    m_isInLine = endsInLine(file);
    m_isDirty = false;
    return synced;
}

} // namespace plc::gateway
