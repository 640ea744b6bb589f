#include "streams/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "streams/output_stream.h"

#include "streams/system_error.h"

namespace plc::streams {
namespace {

constexpr int kBlock = 65536;
constexpr int kAttempts = 100;
constexpr mode_t kNewFile = 0666; // less what the user's mask takes away

/// Behind all links.
QByteArray targetOf(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return QFile::encodeName(info.canonicalFilePath());
    return QFile::encodeName(info.isSymLink() ? info.symLinkTarget() : path);
}

/// The new name of a file is on the disk when its folder is.
void syncFolderOf(const QByteArray& target)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(QFile::decodeName(target)).path());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

} // namespace

FileReplacement::~FileReplacement()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_temporary.isEmpty())
        ::unlink(m_temporary.constData());
}

Expected<void> FileReplacement::open()
{
    m_target = targetOf(m_path);
    struct stat status = {};
    m_hasOld = ::stat(m_target.constData(), &status) == 0;
    if (m_hasOld && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return failure("cannot be written", systemError());
    }
    if (m_hasOld && !S_ISREG(status.st_mode))
        m_descriptor = ::open(m_target.constData(), O_WRONLY | O_CLOEXEC);
    else if (!m_hasOld || ::access(m_target.constData(), W_OK) == 0)
        openNew();
    if (m_descriptor >= 0)
        return {};
    return failure("cannot be written", systemError());
}

/// Beside the old file, since only within one file system a name can be taken over at once.
bool FileReplacement::openNew()
{
    for (int attempt = 0; attempt < kAttempts && m_descriptor < 0; ++attempt) {
        m_temporary =
            m_target + '.' +
            QByteArray::number(QRandomGenerator::global()->generate(), 16).rightJustified(8, '0');
        m_descriptor =
            ::open(m_temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
        if (m_descriptor < 0 && errno != EEXIST)
            break;
    }
    if (m_descriptor < 0)
        m_temporary.clear();
    else if (m_hasOld)
        takeOver(m_target);
    return m_descriptor >= 0;
}

/// Owner and rights of the old file, as far as this user may give them.
void FileReplacement::takeOver(const QByteArray& target) const
{
    struct stat status = {};
    if (::stat(target.constData(), &status) != 0)
        return;
    const int owner = ::fchown(m_descriptor, status.st_uid, status.st_gid);
    const int rights = ::fchmod(m_descriptor, status.st_mode & mode_t(07777));
    static_cast<void>(owner);
    static_cast<void>(rights);
}

bool FileReplacement::write(const QByteArray& bytes)
{
    m_pending += bytes;
    return m_pending.size() < kBlock ? m_failure.isEmpty() : flush();
}

bool FileReplacement::flush()
{
    if (!m_failure.isEmpty())
        return false;
    OutputStream stream(m_descriptor);
    if (!stream.write(m_pending))
        m_failure = stream.error();
    m_pending.clear();
    return m_failure.isEmpty();
}

bool FileReplacement::bringToDisk()
{
    // EINVAL and the like: no disk behind it.
    if (!flush())
        return false;
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != EROFS && errno != ENOTSUP)
        m_failure = systemError();
    return m_failure.isEmpty();
}

Expected<void> FileReplacement::commit()
{
    if (!bringToDisk())
        return failure("cannot be written", m_failure);
    if (m_temporary.isEmpty())
        return {};
    if (std::rename(m_temporary.constData(), m_target.constData()) != 0)
        return failure("cannot be replaced", systemError());
    m_temporary.clear();
    syncFolderOf(m_target);
    return {};
}

Error FileReplacement::failure(const char* what, const QString& reason)
{
    m_failure = reason;
    QString text = QStringLiteral("%1: %2: %3").arg(m_path, QLatin1String(what), reason);
    if (m_descriptor >= 0 && m_hasOld && !m_temporary.isEmpty())
        text += QStringLiteral("; the file stays as it was");
    return {text};
}

} // namespace plc::streams
