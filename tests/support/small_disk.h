#ifndef PLC_TESTS_SUPPORT_SMALL_DISK_H
#define PLC_TESTS_SUPPORT_SMALL_DISK_H

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sched.h>
#include <sys/mount.h>

namespace plc::test {

/// A file system of two megabytes, seen by this process and by those that it starts.
class SmallDisk {
public:
    SmallDisk() = default;
    ~SmallDisk() { unmount(); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    /// Makes the folder. False where nothing can be mounted.
    bool mount(const QString& folder)
    {
        const QByteArray name = QFile::encodeName(folder);
        if (!QDir().mkdir(folder) || ::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", name.constData(), "tmpfs", 0, "size=2m") != 0)
            return false;
        m_folder = name;
        return true;
    }
    void unmount()
    {
        if (!m_folder.isEmpty())
            ::umount2(m_folder.constData(), MNT_DETACH);
        m_folder.clear();
    }

private:
    QByteArray m_folder; ///< Empty: nothing is mounted.
};

} // namespace plc::test

#endif
