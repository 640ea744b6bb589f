#include "log/csv_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "streams/system_error.h"
#include "values/csv.h"
#include "values/utc_time.h"

namespace plc::log {
namespace {

constexpr char kStampFormat[] = "yyyyMMdd'T'HHmmsszzz'Z'";
constexpr char kStampPattern[] = "\\d{8}T\\d{9}Z";
constexpr char kNumberPattern[] = "\\.(?:(\\d{6,18})\\.)?";
constexpr int kNumberDigits = 6; // at least
constexpr mode_t kFileMode = 0644;
constexpr qint64 kBlock = 65536;

QByteArray lineOf(const QStringList& fields)
{
    return values::csv::row(fields).toUtf8() + '\n';
}

QByteArray headerLine()
{
    return lineOf(logColumns());
}

/// A record is one line: values have their line ends escaped, as `plc read` shows them.
QByteArray recordLine(const LogRecord& record)
{
    return lineOf(
        {values::utcTimeText(record.time), record.label, record.value, logStateWord(record.state)});
}

QByteArray readAt(int file, qint64 position, qint64 count)
{
    QByteArray bytes(int(count), '\0');
    const ssize_t got = ::pread(file, bytes.data(), size_t(count), off_t(position));
    bytes.resize(int(qMax<ssize_t>(0, got)));
    return bytes;
}

/// Size of the file up to the end of its last whole line.
qint64 wholeLines(int file, qint64 size)
{
    for (qint64 end = size; end > 0;) {
        const qint64 start = qMax<qint64>(0, end - kBlock);
        const int lineEnd = int(readAt(file, start, end - start).lastIndexOf('\n'));
        if (lineEnd >= 0)
            return start + lineEnd + 1;
        end = start;
    }
    return 0;
}

/// The parts of a file's name that a rotated one gets its time between.
struct NameParts {
    QString stem;
    QString suffix;
};

NameParts nameParts(const QString& path)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix();
    return {info.completeBaseName(), suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix};
}

/// A file that the log has left behind.
struct RotatedFile {
    qint64 number = 0; ///< 0: of a version that gave none.
    QString name;      ///< With the time of its first record.
};

/// In the order in which they were made. The times in their names do not tell it: clocks are set
/// back.
QVector<RotatedFile> rotatedFiles(const QString& path)
{
    const NameParts parts = nameParts(path);
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(parts.stem) + QLatin1String(kNumberPattern) +
        QLatin1String(kStampPattern) + QRegularExpression::escape(parts.suffix)));
    QVector<RotatedFile> files;
    for (const QString& name :
         QFileInfo(path).dir().entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        const QRegularExpressionMatch match = pattern.match(name);
        if (match.hasMatch())
            files.append({match.captured(1).toLongLong(), name});
    }
    std::stable_sort(files.begin(), files.end(), [](const RotatedFile& a, const RotatedFile& b) {
        return a.number < b.number;
    });
    return files;
}

qint64 nextNumber(const QString& path)
{
    const QVector<RotatedFile> files = rotatedFiles(path);
    return files.isEmpty() ? 1 : files.last().number + 1;
}

/// The older files beyond the `keep` youngest go.
bool removeOldest(const QString& path, int keep, QString* failed)
{
    const QVector<RotatedFile> files = rotatedFiles(path);
    const QDir folder = QFileInfo(path).dir();
    for (int i = 0; i + keep < int(files.size()); ++i) {
        *failed = folder.filePath(files[i].name);
        if (::unlink(QFile::encodeName(*failed).constData()) != 0)
            return false;
    }
    return true;
}

} // namespace

QString rotatedName(const QString& path, qint64 number, qint64 firstTime)
{
    const NameParts parts = nameParts(path);
    const QString stamp =
        QDateTime::fromMSecsSinceEpoch(firstTime, Qt::UTC).toString(QLatin1String(kStampFormat));
    return QFileInfo(path).dir().filePath(QStringLiteral("%1.%2.%3%4")
                                              .arg(parts.stem)
                                              .arg(number, kNumberDigits, 10, QLatin1Char('0'))
                                              .arg(stamp, parts.suffix));
}

Expected<std::unique_ptr<CsvLog>> CsvLog::open(const QString& path, const LogRotation& rotation,
                                               bool* isMediumFailing)
{
    std::unique_ptr<CsvLog> log(new CsvLog(path, rotation));
    const Expected<void> opened = log->openFile();
    if (isMediumFailing)
        *isMediumFailing = log->m_isMediumFailing;
    if (!opened)
        return opened.error();
    return log;
}

CsvLog::~CsvLog()
{
    if (m_file >= 0)
        ::close(m_file);
}

Expected<void> CsvLog::openFile()
{
    m_file = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC,
                    kFileMode);
    if (m_file < 0)
        return failure(QStringLiteral("cannot be opened for writing"));
    if (Expected<void> locked = lock(); !locked)
        return locked;
    struct stat status = {};
    if (::fstat(m_file, &status) != 0)
        return failure(QStringLiteral("cannot be examined"));
    m_size = status.st_size;
    m_firstTime = -1;
    return m_size == 0 ? begin() : goOn();
}

/// Two programs that wrote to one file would mix their lines.
Expected<void> CsvLog::lock()
{
    if (::flock(m_file, LOCK_EX | LOCK_NB) == 0)
        return {};
    if (errno != EWOULDBLOCK)
        return failure(QStringLiteral("cannot be locked"));
    return Error{
        QStringLiteral("%1: another program is logging to it; name another file").arg(m_path)};
}

Expected<void> CsvLog::begin()
{
    m_size = 0;
    return append(headerLine());
}

Expected<void> CsvLog::goOn()
{
    const QByteArray header = headerLine();
    const QByteArray start = readAt(m_file, 0, qMin<qint64>(m_size, kBlock));
    if (!start.startsWith(header) && !header.startsWith(start)) {
        return Error{
            QStringLiteral(
                "%1: the file exists and is no log: its first line is not %2; name another "
                "file")
                .arg(m_path, QString::fromUtf8(header.trimmed()))};
    }
    const qint64 whole = wholeLines(m_file, m_size);
    m_cutBytes = m_size - whole;
    if (m_cutBytes > 0 && ::ftruncate(m_file, off_t(whole)) != 0)
        return failure(QStringLiteral("cannot be cut to its whole lines"));
    m_size = whole;
    if (m_size == 0)
        return begin();
    const QByteArray firstRecord = start.mid(int(header.size()));
    const int timeEnd = int(firstRecord.indexOf(','));
    m_firstTime = parseLogTime(QString::fromUtf8(firstRecord.left(timeEnd))).value_or(-1);
    return {};
}

Expected<void> CsvLog::write(const QVector<LogRecord>& records)
{
    QByteArray lines;
    for (const LogRecord& record : records) {
        const QByteArray line = recordLine(record);
        if (mustRotate(record, lines.size() + line.size())) {
            if (Expected<void> appended = append(lines); !appended)
                return appended;
            if (Expected<void> rotated = rotate(); !rotated)
                return rotated;
            lines.clear();
        }
        if (m_firstTime < 0)
            m_firstTime = record.time;
        lines += line;
    }
    return append(lines);
}

bool CsvLog::mustRotate(const LogRecord& record, qint64 bytes) const
{
    // A file has one record at least, however small it may be.
    if (m_firstTime < 0)
        return false;
    const bool isFull = m_rotation.size > 0 && m_size + bytes > m_rotation.size;
    // A clock that was set back must not stop it until it has caught up.
    const qint64 time = qAbs(record.time - m_firstTime);
    const bool isOld = m_rotation.period > 0 && time >= m_rotation.period;
    return isFull || isOld;
}

/// All bytes or none: of a part that was written nothing stays.
Expected<void> CsvLog::append(const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(m_file, bytes.constData() + done, size_t(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            const Error error = failure(QStringLiteral("cannot be written"));
            m_isMediumFailing = true;
            const int cut = ::ftruncate(m_file, off_t(m_size));
            static_cast<void>(cut); // it is tried again when the log goes on
            return error;
        }
        done += count;
    }
    m_size += bytes.size();
    if (!bytes.isEmpty() && ::fdatasync(m_file) != 0 && errno != EINVAL) // no disk behind it
        return failure(QStringLiteral("cannot be brought to the disk"));
    return {};
}

Expected<void> CsvLog::rotate()
{
    const QByteArray name = QFile::encodeName(rotatedName(m_path, nextNumber(m_path), m_firstTime));
    if (::rename(QFile::encodeName(m_path).constData(), name.constData()) != 0)
        return failure(QStringLiteral("cannot be renamed to ") + QFile::decodeName(name));
    ::close(m_file);
    m_file = -1;
    QString failed;
    if (m_rotation.keep > 0 && !removeOldest(m_path, m_rotation.keep, &failed))
        return failure(QStringLiteral("the older file %1 cannot be removed").arg(failed));
    return openFile();
}

/// Describes the failure of the system's call before.
Error CsvLog::failure(const QString& what) const
{
    return {QStringLiteral("%1: %2: %3").arg(m_path, what, streams::systemError())};
}

} // namespace plc::log
