#ifndef PLC_HOST_DRIVER_LIBRARY_QT_H
#define PLC_HOST_DRIVER_LIBRARY_QT_H

#include <QtCore/QIODevice>
#include <QtCore/QStringList>

#include <optional>

namespace plc::host {

/// Names of the libraries that the loader would load along with the shared library in `file`, as
/// its dynamic section lists them. Nothing of the library is run. Nothing is returned for what is
/// no shared library of this program's word size and byte order, or is damaged.
std::optional<QStringList> neededLibraries(QIODevice* file);

/// Major version of the Qt whose Core library is among `libraries`; nothing when there is none, or
/// when there are several.
std::optional<int> qtMajorAmong(const QStringList& libraries);

} // namespace plc::host

#endif
