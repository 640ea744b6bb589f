#include "host/driver/library_copy.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace plc::host {
namespace {

Error systemError(const QString& what)
{
    return {QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)))};
}

bool writeAll(int descriptor, const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            ::write(descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (written < 0 && errno != EINTR)
            return false;
        done += qMax<qint64>(0, written);
    }
    return true;
}

} // namespace

Expected<LibraryCopy> LibraryCopy::inMemory(const QByteArray& library)
{
    LibraryCopy copy;
    copy.m_descriptor = ::memfd_create("plc_driver", MFD_CLOEXEC);
    if (copy.m_descriptor < 0 || !writeAll(copy.m_descriptor, library))
        return systemError(QStringLiteral("no file in memory"));
    copy.m_path = "/proc/self/fd/" + QByteArray::number(copy.m_descriptor);
    return copy;
}

Expected<LibraryCopy> LibraryCopy::inFolder(const QByteArray& library, const QStringList& folders)
{
    Error error{QStringLiteral("no folder for a temporary file")};
    for (const QString& folder : folders) {
        LibraryCopy copy;
        copy.m_path = QFile::encodeName(QDir(folder).filePath(QStringLiteral("plc_driver_XXXXXX")));
        const int descriptor = ::mkostemp(copy.m_path.data(), O_CLOEXEC);
        if (descriptor < 0) {
            error = systemError(folder);
            continue;
        }
        copy.m_isFile = true;
        const bool isWritten = writeAll(descriptor, library);
        if (!isWritten)
            error = systemError(folder);
        ::close(descriptor);
        if (isWritten)
            return copy;
    }
    return error;
}

LibraryCopy::LibraryCopy(LibraryCopy&& other) noexcept
    : m_path(std::move(other.m_path)),
      m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_isFile(std::exchange(other.m_isFile, false))
{
}

LibraryCopy::~LibraryCopy()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (m_isFile)
        ::unlink(m_path.constData());
}

int LibraryCopy::takeDescriptor()
{
    return std::exchange(m_descriptor, -1);
}

QStringList temporaryFolders()
{
    QStringList folders{QDir::tempPath()};
    const QString ofUser = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!ofUser.isEmpty())
        folders.append(ofUser);
    folders << QStringLiteral("/dev/shm") << QStringLiteral("/run") << QStringLiteral("/var/tmp");
    return folders;
}

} // namespace plc::host
