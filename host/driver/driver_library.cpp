#include "host/driver/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>
#include <QtCore/QStringList>

#include "host/driver/library_qt.h"

namespace plc::host {
namespace {

// With its version: the plain name is there only where hosts are developed.
const char kFileName[] = PLC_DRIVER_FILE;
const char kArchitecture[] = PLC_LIBRARY_ARCHITECTURE;

/// Resolves names one after the other and remembers those that are missing.
class Resolver {
public:
    explicit Resolver(QLibrary* library) : m_library(library) {}

    template <typename Function>
    void resolve(const char* name, Function* function)
    {
        *function = reinterpret_cast<Function>(m_library->resolve(name));
        if (*function == nullptr)
            m_missing.append(QString::fromLatin1(name));
    }
    const QStringList& missing() const { return m_missing; }

private:
    QLibrary* m_library;
    QStringList m_missing;
};

DriverFunctions resolveAll(Resolver* resolver)
{
    DriverFunctions functions;
    resolver->resolve("SetComInfo", &functions.setComInfo);
    resolver->resolve("RegistCallBackFuncIntf", &functions.registCallBackFuncIntf);
    resolver->resolve("FlashLocalRegister", &functions.flashLocalRegister);
    resolver->resolve("QueryFinishFlag", &functions.queryFinishFlag);
    resolver->resolve("EnCommStation", &functions.enCommStation);
    resolver->resolve("EnableEthernet", &functions.enableEthernet);
    resolver->resolve("PassVarName_2", &functions.passVarName2);
    resolver->resolve("PLCAddressChangeIntef", &functions.plcAddressChangeIntef);
    resolver->resolve("AddListReadVar", &functions.addListReadVar);
    resolver->resolve("AddListWriteVar", &functions.addListWriteVar);
    resolver->resolve("AddListOnceReadVar", &functions.addListOnceReadVar);
    resolver->resolve("ReCreatReadVarList", &functions.reCreatReadVarList);
    resolver->resolve("ComCommunication", &functions.comCommunication);
    resolver->resolve("DataCom", &functions.dataCom);
    resolver->resolve("GetRegisterData", &functions.getRegisterData);
    resolver->resolve("SetRegisterData", &functions.setRegisterData);
    return functions;
}

/// Folders to look in, the nearest first.
QStringList libraryFolders(const QString& programFolder)
{
    const auto beside = [&programFolder](const char* name) {
        return QDir::cleanPath(programFolder + QStringLiteral("/../") + QLatin1String(name));
    };
    QStringList folders = {QDir::cleanPath(programFolder), beside("lib")};
    // Debian installs libraries in a folder named after the architecture. There may be some for
    // other ones beside it, which this program cannot load.
    if (*kArchitecture != '\0')
        folders.append(QDir(beside("lib")).filePath(QLatin1String(kArchitecture)));
    folders.append(beside("driver"));
    return folders;
}

QString whatToGive()
{
    return QStringLiteral("give the one for Qt %1, %2, with --driver or in PLC_DRIVER")
        .arg(QT_VERSION_MAJOR)
        .arg(QLatin1String(kFileName));
}

/// Why the library at `path` must not be loaded into this program; empty when it may be. Host and
/// driver hand Qt's values to each other: with another Qt these are read wrongly, and the loading
/// alone brings a second Qt into the process. So the file is asked, before any of it is loaded.
QString reasonNotToLoad(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot load the driver library %1: %2; %3")
            .arg(path, file.errorString(), whatToGive());
    const std::optional<QStringList> libraries = neededLibraries(&file);
    if (!libraries)
        return QStringLiteral(
                   "cannot load the driver library %1: it is no shared library for "
                   "this program, or it is damaged; %2")
            .arg(path, whatToGive());
    const std::optional<int> qt = qtMajorAmong(*libraries);
    if (!qt)
        return QStringLiteral(
                   "cannot tell for which Qt %1 was built: it is linked with no Qt Core "
                   "library, or with several; %2")
            .arg(path, whatToGive());
    if (*qt != QT_VERSION_MAJOR)
        return QStringLiteral(
                   "the driver library %1 was built for Qt %2, and this program uses "
                   "Qt %3; %4")
            .arg(path)
            .arg(*qt)
            .arg(QT_VERSION_MAJOR)
            .arg(whatToGive());
    return QString();
}

/// The libraries for another Qt in these folders, where none for this one is.
QStringList librariesForOtherQts(const QStringList& folders)
{
    const QString name = QLatin1String(kFileName);
    const QString thisQt = QStringLiteral("_qt%1.").arg(QT_VERSION_MAJOR);
    QStringList found;
    for (const QString& folder : folders) {
        for (const int other : {4, 5, 6}) {
            QString otherName = name;
            otherName.replace(thisQt, QStringLiteral("_qt%1.").arg(other));
            const QFileInfo file(QDir(folder), otherName);
            if (otherName != name && file.exists())
                found.append(file.absoluteFilePath());
        }
    }
    return found;
}

} // namespace

std::optional<DriverFunctions> loadDriver(const QString& path, QString* error)
{
    *error = reasonNotToLoad(path);
    if (!error->isEmpty())
        return std::nullopt;
    // The whole path: of a bare name the loader would look for a file elsewhere.
    QLibrary library(QFileInfo(path).absoluteFilePath());
    if (!library.load()) {
        *error = QStringLiteral("cannot load the driver library %1: %2; %3")
                     .arg(path, library.errorString(), whatToGive());
        return std::nullopt;
    }
    Resolver resolver(&library);
    const DriverFunctions functions = resolveAll(&resolver);
    if (!resolver.missing().isEmpty()) {
        *error = QStringLiteral("%1 is no PLC driver of this interface: it lacks %2")
                     .arg(path, resolver.missing().join(QStringLiteral(", ")));
        return std::nullopt;
    }
    return functions;
}

QString findDriver(const QString& requested, const QString& programFolder, QString* error)
{
    if (!requested.isEmpty())
        return requested;
    QString fromEnvironment = qEnvironmentVariable("PLC_DRIVER");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QStringList folders = libraryFolders(programFolder);
    for (const QString& folder : folders) {
        const QFileInfo file(QDir(folder), QString::fromLatin1(kFileName));
        if (file.exists())
            return file.absoluteFilePath();
    }
    *error = QStringLiteral("%1 is in none of %2; give its path with --driver or in PLC_DRIVER")
                 .arg(QString::fromLatin1(kFileName), folders.join(QStringLiteral(", ")));
    const QStringList others = librariesForOtherQts(folders);
    if (!others.isEmpty())
        *error += QStringLiteral(". This program uses Qt %1 and cannot use %2")
                      .arg(QString::number(QT_VERSION_MAJOR), others.join(QStringLiteral(", ")));
    return QString();
}

} // namespace plc::host
