#ifndef PLC_HOST_DRIVER_LIBRARY_COPY_H
#define PLC_HOST_DRIVER_LIBRARY_COPY_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include "values/expected.h"

namespace plc::host {

/// A file that is a copy of a library, under a name that the loader has not met yet.
class LibraryCopy {
public:
    /// In the memory of this process.
    static Expected<LibraryCopy> inMemory(const QByteArray& library);
    /// In the first of these folders that takes it.
    static Expected<LibraryCopy> inFolder(const QByteArray& library, const QStringList& folders);

    LibraryCopy(LibraryCopy&& other) noexcept;
    LibraryCopy& operator=(LibraryCopy&&) = delete;
    /// Removes a file in a folder: what is loaded stays loaded. What is in memory goes with the
    /// last that keeps it open or mapped.
    ~LibraryCopy();

    const QByteArray& path() const { return m_path; }
    /// Hands the descriptor of what is in memory to the caller, who closes it after unloading: the
    /// name, which has its number in it, must not come up again before. -1: there is none.
    int takeDescriptor();

private:
    LibraryCopy() = default;

    QByteArray m_path;
    int m_descriptor = -1;
    bool m_isFile = false;
};

/// Folders for temporary files, of which some may be read-only or forbid code to be run.
QStringList temporaryFolders();

} // namespace plc::host

#endif
