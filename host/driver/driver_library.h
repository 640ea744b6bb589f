#ifndef PLC_HOST_DRIVER_DRIVER_LIBRARY_H
#define PLC_HOST_DRIVER_DRIVER_LIBRARY_H

#include <QtCore/QString>

#include <memory>

#include "host/driver/driver_claim.h"
#include "host/driver/driver_functions.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::host {

/// A loaded driver library. It holds all of one PLC's state: lists, image and login; so one at a
/// time takes it, and each further PLC of a process needs a copy of its own.
///
/// 1. Nothing of a library that was built for another Qt than this program is loaded or run.
/// 2. What load() gives is one library for all who load the same file, of whom one can have taken
///    it. It stays loaded until the process ends.
/// 3. What loadCopy() gives shares nothing with any other. It is unloaded together with the last
///    DriverLibrary that stands for it, or the claim on it if that ends later.
/// 4. A copy keeps one file descriptor open, closed on exec, where the system has memory files;
///    else none.
///
/// May be loaded and let go of in any thread.
class PLC_HOST_EXPORT DriverLibrary {
public:
    /// Loads the library in the file `path`.
    static Expected<DriverLibrary> load(const QString& path);

    /// Loads a copy of the library in the file `path`, from memory or, where that cannot be, from
    /// a temporary file that is gone when this returns. So the file system may be read-only.
    static Expected<DriverLibrary> loadCopy(const QString& path);

    /// For a runtime. An error when the library is taken: by a runtime that has not ended, or
    /// through another DriverLibrary of the same file.
    Expected<DriverClaim> take() const;

    /// Valid as long as the library is loaded. For what needs no PLC; to use more of a library than
    /// that is to take it.
    const DriverFunctions& functions() const;

private:
    class Handle;
    explicit DriverLibrary(std::shared_ptr<const Handle> handle) : m_handle(std::move(handle)) {}

    static Expected<DriverLibrary> resolved(std::shared_ptr<Handle> handle, const QString& path);

    std::shared_ptr<const Handle> m_handle;
};

/// Where the library is: `requested` if it is not empty, else what the environment variable
/// PLC_DRIVER names, else the first that exists in the folder of the program, in the lib folder of
/// its installation or in its build tree.
PLC_HOST_EXPORT Expected<QString> findDriver(const QString& requested,
                                             const QString& programFolder);

} // namespace plc::host

#endif
