#include "configuration/service_paths.h"

#include <QtCore/QDir>

namespace plc::configuration {
namespace {

/// Folders that the service manager makes for a service and names in its environment.
const char* const kServiceFolders[] = {"CREDENTIALS_DIRECTORY", "STATE_DIRECTORY",
                                       "RUNTIME_DIRECTORY"};

QString beginningWith(const char* name)
{
    return QLatin1Char('$') + QString::fromLatin1(name) + QLatin1Char('/');
}

} // namespace

QString resolvedPath(const QString& path, const QString& folder)
{
    if (path.isEmpty())
        return path;
    for (const char* name : kServiceFolders) {
        const QString variable = beginningWith(name);
        if (!path.startsWith(variable))
            continue;
        const QString value = qEnvironmentVariable(name);
        return value.isEmpty() ? path : QDir(value).filePath(path.mid(variable.size()));
    }
    return QDir(folder).filePath(path);
}

QString missingFolder(const QString& resolvedPath)
{
    for (const char* name : kServiceFolders) {
        if (resolvedPath.startsWith(beginningWith(name)))
            return QString::fromLatin1(name);
    }
    return QString();
}

bool isCredential(const QString& resolvedPath)
{
    const QString folder = qEnvironmentVariable("CREDENTIALS_DIRECTORY");
    return !folder.isEmpty() && resolvedPath.startsWith(folder + QLatin1Char('/'));
}

} // namespace plc::configuration
