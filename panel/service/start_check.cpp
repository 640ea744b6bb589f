#include "panel/service/start_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include "configuration/service_paths.h"
#include "panel/access/audit_chain.h"
#include "service/listening_socket.h"

namespace plc::panel {
namespace {

constexpr char kDatabaseBegin[] = "SQLite format 3";

Error wrong(const QString& path, const char* sentence)
{
    return Error{QStringLiteral("%1: %2").arg(path, QLatin1String(sentence))};
}

/// The folder of a file is there, and things can be made in it.
Expected<void> checkFolderOf(const QString& path)
{
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir())
        return wrong(path, "the folder for it does not exist");
    if (!folder.isWritable() || !folder.isExecutable())
        return wrong(path, "nothing can be made in its folder");
    return {};
}

/// Also one that is yet to be made.
Expected<void> checkFile(const QString& path, bool (*isOfKind)(const QByteArray& begin),
                         const char* otherwise)
{
    if (Expected<void> isThere = checkFolderOf(path); !isThere)
        return isThere;
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    if (!info.isFile())
        return wrong(path, "is no file");
    QFile file(path);
    if (!info.isWritable() || !file.open(QIODevice::ReadOnly))
        return wrong(path, "cannot be read and written");
    const QByteArray begin = file.readLine(kLongestAuditLine);
    if (!begin.isEmpty() && !isOfKind(begin))
        return wrong(path, otherwise);
    return {};
}

bool beginsDatabase(const QByteArray& begin)
{
    return begin.startsWith(kDatabaseBegin);
}

/// A first line that is not whole was never told to be there.
bool beginsAudit(const QByteArray& begin)
{
    return !begin.endsWith('\n') || parseAuditLine(begin.left(begin.size() - 1));
}

Expected<void> checkSocket(const QString& path)
{
    if (Expected<void> isThere = checkFolderOf(path); !isThere)
        return isThere;
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) == 0 && !S_ISSOCK(status.st_mode))
        return wrong(path, "exists and is no socket; name another path");
    return {};
}

/// The folder itself is made with the first recipe.
Expected<void> checkRecipes(const QString& path)
{
    const QFileInfo folder(path);
    if (folder.exists() && !folder.isDir())
        return wrong(path, "is no folder");
    return Expected<void>();
}

/// At any free port: the one that is meant may be that of a panel that runs.
Expected<void> checkAddress(const QString& address)
{
    const Expected<int> socket = service::listenOnAddress(address, 0);
    if (!socket)
        return Error{QStringLiteral("%1: is no address that this machine can listen on; %2")
                         .arg(address, socket.error().text)};
    ::close(*socket);
    return {};
}

} // namespace

Expected<void> checkFolders(const PanelSettings& settings)
{
    QStringList paths{settings.socket,    settings.certificate, settings.key,    settings.usersFile,
                      settings.auditFile, settings.record.file, settings.recipes};
    for (const PlcSettings& plc : settings.plcs)
        paths.append(plc.project);
    for (const QString& path : std::as_const(paths)) {
        const QString folder = configuration::missingFolder(path);
        if (!folder.isEmpty())
            return Error{QStringLiteral("\"%1\" lies in a folder of the service: %2 is not set. "
                                        "The service manager sets it; by hand, call with %2=…")
                             .arg(path, folder)};
    }
    return {};
}

Expected<void> checkPlaces(const PanelSettings& settings)
{
    Expected<void> outcome;
    if (!settings.address.isEmpty())
        outcome = checkAddress(settings.address);
    if (outcome && !settings.socket.isEmpty())
        outcome = checkSocket(settings.socket);
    if (outcome && !settings.auditFile.isEmpty())
        outcome = checkFile(settings.auditFile, &beginsAudit, "is no audit");
    if (outcome && !settings.record.file.isEmpty())
        outcome = checkFile(settings.record.file, &beginsDatabase, "is no recording");
    if (outcome && !settings.recipes.isEmpty())
        outcome = checkRecipes(settings.recipes);
    return outcome;
}

} // namespace plc::panel
