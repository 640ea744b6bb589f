#include "panel/access/audit_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "panel/access/secrets.h"
#include "streams/system_error.h"

namespace plc::panel {
namespace {

constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP;
constexpr int kHashBytes = 32;

Error failure(const QString& path, const char* what)
{
    return Error{
        QStringLiteral("%1: %2: %3").arg(path, QLatin1String(what), streams::systemError())};
}

qint64 sizeOf(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 ? qint64(status.st_size) : 0;
}

/// Appends as many of the bytes as there is room for. Where these are not all, errno says why.
qint64 writeMost(int descriptor, const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + done, std::size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            break;
        done += count;
    }
    return done;
}

/// The last bytes of a file.
QByteArray tailOf(int descriptor, qint64 most)
{
    const qint64 size = sizeOf(descriptor);
    const qint64 begin = size > most ? size - most : 0;
    QByteArray bytes(int(size - begin), '\0');
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(descriptor, bytes.data() + done,
                                      std::size_t(bytes.size() - done), begin + done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += count;
    }
    return bytes.left(int(done));
}

} // namespace

Expected<std::unique_ptr<AuditLog>> AuditLog::open(const QString& path, qint64 time)
{
    std::unique_ptr<AuditLog> log(new AuditLog(path));
    Expected<File> file = openFile(path);
    if (!file)
        return file.error();
    log->m_file = *file;
    const Expected<void> begun = log->begin(&log->m_file, time, nullptr);
    if (!begun)
        return begun.error();
    return log;
}

AuditLog::~AuditLog()
{
    close(&m_file);
}

void AuditLog::close(File* file)
{
    if (file->descriptor >= 0)
        ::close(file->descriptor);
    file->descriptor = -1;
}

Expected<AuditLog::File> AuditLog::openFile(const QString& path)
{
    File file;
    file.descriptor = ::open(QFile::encodeName(path).constData(),
                             O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kMode);
    if (file.descriptor < 0)
        return failure(path, "cannot be opened for writing");
    struct stat status = {};
    Expected<void> outcome;
    if (::fstat(file.descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        outcome = Error{QStringLiteral("%1: is no file").arg(path)};
    else if (::flock(file.descriptor, LOCK_EX | LOCK_NB) != 0)
        outcome = Error{QStringLiteral("%1: another process writes it").arg(path)};
    else
        outcome = findEnd(path, &file);
    if (outcome)
        return file;
    close(&file);
    return outcome.error();
}

/// The last line that is one, and what stands behind it.
Expected<void> AuditLog::findEnd(const QString& path, File* file)
{
    const QByteArray tail = tailOf(file->descriptor, 2 * kLongestAuditLine);
    int end = int(tail.lastIndexOf('\n'));
    while (end >= 0) {
        const int begin = end > 0 ? int(tail.lastIndexOf('\n', end - 1)) + 1 : 0;
        if (const std::optional<AuditLink> link = parseAuditLine(tail.mid(begin, end - begin))) {
            file->head = link->hash;
            file->number = link->number;
            break;
        }
        end = begin - 1;
    }
    file->unended = tail.mid(end + 1);
    if (file->number >= 0 && !isCutPart(file->unended))
        file->flaw = QStringLiteral("%1: its last lines are none of an audit").arg(path);
    if (file->number >= 0 || tail.isEmpty() || isCutBeginning(tail))
        return {};
    return Error{QStringLiteral("%1: is no audit that can be gone on with").arg(path)};
}

/// `before`: the file that the chain comes from; null: what is new begins a chain.
Expected<void> AuditLog::begin(File* file, qint64 time, const File* before)
{
    if (file->number >= 0)
        return {};
    // At most a part of the first line is there: nobody was told that there is an audit.
    if (::ftruncate(file->descriptor, 0) != 0)
        return failure(m_path, "cannot be written");
    file->unended.clear();
    file->head = before ? before->head : randomBytes(kHashBytes).toHex();
    file->number = before ? before->number : -1;
    return add(file, beginningLine(time, before != nullptr, file->number + 1, file->head));
}

/// What is in a file without a name is gone with the process.
bool AuditLog::hasName(const File& file)
{
    struct stat status = {};
    return ::fstat(file.descriptor, &status) == 0 && status.st_nlink > 0;
}

Expected<void> AuditLog::append(const AuditRecord& record)
{
    const AuditAppended appended = append(QVector<AuditRecord>{record});
    return appended.kept == 1 ? Expected<void>() : Expected<void>(appended.failure);
}

AuditAppended AuditLog::append(const QVector<AuditRecord>& records)
{
    if (records.isEmpty())
        return {};
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const Expected<void> isReady = makeReady(records.first().time); !isReady)
        return {0, isReady.error()};
    QVector<QByteArray> lines;
    QByteArray head = m_file.head;
    for (const AuditRecord& record : records) {
        lines.append(recordLine(record, m_file.number + 1 + lines.size(), head));
        head = sha256(lines.last());
    }
    AuditAppended appended = addAll(&m_file, lines);
    m_isWorking = appended.kept == int(records.size());
    return appended;
}

/// Until the next line may be added. The file is taken for one that fails until that has succeeded.
Expected<void> AuditLog::makeReady(qint64 time)
{
    const bool wasWorking = std::exchange(m_isWorking, false);
    Expected<void> outcome;
    // What the disk did with the last line is only known by looking.
    if (!wasWorking)
        outcome = findEnd(m_path, &m_file);
    if (outcome && !hasName(m_file))
        outcome = change(time);
    if (outcome && !m_file.unended.isEmpty())
        outcome =
            add(&m_file, cutLine(time, sha256(m_file.unended), m_file.number + 1, m_file.head));
    return outcome;
}

Expected<void> AuditLog::add(File* file, const QByteArray& line)
{
    const AuditAppended added = addAll(file, {line});
    return added.kept == 1 ? Expected<void>() : Expected<void>(added.failure);
}

/// Lines that were written whole are kept, also where the next one has no room.
AuditAppended AuditLog::addAll(File* file, const QVector<QByteArray>& lines)
{
    QByteArray bytes = file->unended.isEmpty() ? "" : "\n";
    QVector<qint64> ends;
    for (const QByteArray& line : lines) {
        bytes += line + '\n';
        ends.append(bytes.size());
    }
    AuditAppended added;
    const qint64 done = writeMost(file->descriptor, bytes);
    if (done < bytes.size())
        added.failure = failure(m_path, "cannot be written");
    const auto kept = int(std::upper_bound(ends.begin(), ends.end(), done) - ends.begin());
    if (kept == 0)
        return added;
    if (::fdatasync(file->descriptor) != 0) {
        added.failure = failure(m_path, "cannot be brought onto the disk");
        return added;
    }
    added.kept = kept;
    file->unended.clear();
    file->head = sha256(lines[kept - 1]);
    file->number += kept;
    return added;
}

Expected<void> AuditLog::reopen(qint64 time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    struct stat there = {};
    struct stat own = {};
    if (::stat(QFile::encodeName(m_path).constData(), &there) == 0 &&
        ::fstat(m_file.descriptor, &own) == 0 && there.st_dev == own.st_dev &&
        there.st_ino == own.st_ino)
        return {};
    Expected<void> changed = change(time);
    m_isWorking = m_isWorking || changed;
    return changed;
}

/// To the file that has the name now.
Expected<void> AuditLog::change(qint64 time)
{
    Expected<File> file = openFile(m_path);
    if (!file)
        return file.error();
    const Expected<void> begun = begin(&*file, time, &m_file);
    if (!begun) {
        close(&*file);
        return begun.error();
    }
    close(&m_file);
    m_file = *file;
    return {};
}

QString AuditLog::flaw() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_file.flaw;
}

QByteArray AuditLog::head() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_file.head;
}

bool AuditLog::isWorking() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isWorking;
}

} // namespace plc::panel
