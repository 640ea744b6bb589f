#include "host/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>
#include <QtCore/QStringList>

namespace plc {
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

} // namespace

std::optional<DriverFunctions> loadDriver(const QString& path, QString* error)
{
    QLibrary library(path);
    if (!library.load()) {
        *error = QStringLiteral(
                     "cannot load the driver library %1: %2; give another one with "
                     "--driver or in PLC_DRIVER, built for the Qt of this program")
                     .arg(path, library.errorString());
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
    return QString();
}

} // namespace plc
