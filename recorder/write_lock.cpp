#include "recorder/write_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cerrno>

#include "streams/system_error.h"

namespace plc::recorder {
namespace {

constexpr mode_t kFileMode = 0644;

/// Whether the name still leads to the file: the one that held the lock may have removed it.
bool leadsTo(const QByteArray& name, int file)
{
    struct stat ofName = {};
    struct stat ofFile = {};
    return ::stat(name.constData(), &ofName) == 0 && ::fstat(file, &ofFile) == 0 &&
           ofName.st_dev == ofFile.st_dev && ofName.st_ino == ofFile.st_ino;
}

} // namespace

WriteLock::~WriteLock()
{
    release();
}

/// The folder may have been moved, and the name be another's.
void WriteLock::release()
{
    if (m_file < 0)
        return;
    if (leadsTo(m_name, m_file))
        ::unlink(m_name.constData());
    ::close(m_file);
    m_file = -1;
}

Expected<void> WriteLock::take(const QString& path)
{
    const QByteArray name = QFile::encodeName(path) + "-lock";
    if (m_file >= 0 && name == m_name && leadsTo(m_name, m_file))
        return {};
    release();
    m_name = name;
    for (;;) {
        const int file = ::open(m_name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, kFileMode);
        if (file < 0) {
            return Error{QStringLiteral("%1: cannot be opened for writing: %2")
                             .arg(QFile::decodeName(m_name), streams::systemError())};
        }
        if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
            const bool isHeld = errno == EWOULDBLOCK;
            const QString reason = streams::systemError();
            ::close(file);
            if (isHeld) {
                return Error{
                    QStringLiteral("%1: another program is recording into it; name another file")
                        .arg(path)};
            }
            return Error{
                QStringLiteral("%1: cannot be locked: %2").arg(QFile::decodeName(m_name), reason)};
        }
        if (leadsTo(m_name, file)) {
            m_file = file;
            return {};
        }
        ::close(file);
    }
}

} // namespace plc::recorder
