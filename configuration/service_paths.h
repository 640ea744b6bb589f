#ifndef PLC_CONFIGURATION_SERVICE_PATHS_H
#define PLC_CONFIGURATION_SERVICE_PATHS_H

#include <QtCore/QString>

namespace plc::configuration {

/// A path of a configuration that lies in `folder`. Paths that begin with $CREDENTIALS_DIRECTORY/,
/// $STATE_DIRECTORY/ or $RUNTIME_DIRECTORY/ lie in the folders that the service manager gave to
/// this process; where there are none, they stay as they stand. An empty path stays empty.
QString resolvedPath(const QString& path, const QString& folder);

/// Of a path that stayed as it stands for want of a service manager, the variable without its
/// sign: "RUNTIME_DIRECTORY". Empty for other paths.
QString missingFolder(const QString& resolvedPath);

/// Whether the service manager keeps this file for the service: a copy of the start.
bool isCredential(const QString& resolvedPath);

} // namespace plc::configuration

#endif
