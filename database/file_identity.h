#ifndef PLC_DATABASE_FILE_IDENTITY_H
#define PLC_DATABASE_FILE_IDENTITY_H

#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>

#include <cerrno>

namespace plc::database {

/// Which file a name leads to. What is written into one that was moved or removed while it was
/// open is lost, and nothing else tells.
class FileIdentity {
public:
    FileIdentity() = default;
    explicit FileIdentity(const QString& path) : m_name(QFile::encodeName(path))
    {
        isThere(&m_status);
    }

    QString path() const { return QFile::decodeName(m_name); }
    /// Whether the name leads to the same file; also when it cannot be told.
    bool isStill() const
    {
        struct stat now = {};
        return isThere(&now) ? isSame(now) : errno != ENOENT && errno != ENOTDIR;
    }

    /// Removes the file unless the name leads to another one.
    void remove() const
    {
        struct stat now = {};
        if (isThere(&now) && isSame(now))
            ::unlink(m_name.constData());
    }

private:
    bool isSame(const struct stat& now) const
    {
        return now.st_dev == m_status.st_dev && now.st_ino == m_status.st_ino;
    }
    bool isThere(struct stat* status) const { return ::stat(m_name.constData(), status) == 0; }

    QByteArray m_name;
    struct stat m_status = {};
};

} // namespace plc::database

#endif
