#include "host/driver/driver_library.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <optional>

#include <dlfcn.h>
#include <unistd.h>

#include "host/driver/library_copy.h"
#include "host/driver/library_qt.h"

namespace plc::host {
namespace {

// With its version: the plain name is there only where hosts are developed.
constexpr char kFileName[] = PLC_DRIVER_FILE;
constexpr char kArchitecture[] = PLC_LIBRARY_ARCHITECTURE;

/// Resolves names one after the other and remembers those that are missing.
class Resolver {
public:
    explicit Resolver(void* library) : m_library(library) {}

    template <typename Function>
    void resolve(const char* name, Function* function)
    {
        *function = reinterpret_cast<Function>(::dlsym(m_library, name));
        if (!*function)
            m_missing.append(QString::fromLatin1(name));
    }
    const QStringList& missing() const { return m_missing; }

private:
    void* m_library;
    QStringList m_missing;
};

DriverFunctions resolveAll(Resolver* resolver)
{
    DriverFunctions functions;
    resolver->resolve("SetComInfo", &functions.setComInfo);
    resolver->resolve("RegistCallBackFuncIntf", &functions.registCallBackFuncIntf);
    resolver->resolve("FlashLocalRegister", &functions.flashLocalRegister);
    resolver->resolve("LB", &functions.hostWord);
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

/// An error says why the library at `path` must not be loaded into this program. Host and driver
/// hand Qt's values to each other: with another Qt these are read wrongly, and the loading alone
/// brings a second Qt into the process. So the file is asked, before any of it is loaded.
Expected<void> checkLoadable(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("cannot load the driver library %1: %2; %3")
                         .arg(path, file.errorString(), whatToGive())};
    const std::optional<QStringList> libraries = neededLibraries(&file);
    if (!libraries)
        return Error{
            QStringLiteral("cannot load the driver library %1: it is no shared library for "
                           "this program, or it is damaged; %2")
                .arg(path, whatToGive())};
    const std::optional<int> qt = qtMajorAmong(*libraries);
    if (!qt)
        return Error{
            QStringLiteral("cannot tell for which Qt %1 was built: it is linked with no Qt Core "
                           "library, or with several; %2")
                .arg(path, whatToGive())};
    if (*qt != QT_VERSION_MAJOR)
        return Error{
            QStringLiteral("the driver library %1 was built for Qt %2, and this program uses "
                           "Qt %3; %4")
                .arg(path)
                .arg(*qt)
                .arg(QT_VERSION_MAJOR)
                .arg(whatToGive())};
    return {};
}

Error notLoaded(const QString& path, const QString& reason)
{
    return {QStringLiteral("cannot load the driver library %1: %2; %3")
                .arg(path, reason, whatToGive())};
}

/// Nothing, with one more reason why, when the loader does not take the copy.
void* openCopy(const LibraryCopy& copy, QStringList* errors)
{
    void* library = ::dlopen(copy.path().constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        errors->append(QString::fromLocal8Bit(::dlerror()));
    return library;
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

/// A library that the system's loader has loaded.
class DriverLibrary::Handle {
public:
    /// `descriptor` is closed when the library is unloaded; -1: there is none, and the library
    /// stays.
    Handle(void* library, int descriptor, bool isCopy)
        : m_library(library), m_descriptor(descriptor), m_isCopy(isCopy)
    {
    }
    ~Handle()
    {
        if (!m_isCopy)
            return;
        ::dlclose(m_library);
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void* library() const { return m_library; }
    DriverFunctions functions;

private:
    void* const m_library;
    const int m_descriptor;
    const bool m_isCopy;
};

Expected<DriverLibrary> DriverLibrary::load(const QString& path)
{
    if (const Expected<void> isLoadable = checkLoadable(path); !isLoadable)
        return isLoadable.error();
    // The whole path: of a bare name the loader would look for a file elsewhere.
    const QByteArray file = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    void* library = ::dlopen(file.constData(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return notLoaded(path, QString::fromLocal8Bit(::dlerror()));
    return resolved(std::make_shared<Handle>(library, -1, false), path);
}

Expected<DriverLibrary> DriverLibrary::loadCopy(const QString& path)
{
    if (const Expected<void> isLoadable = checkLoadable(path); !isLoadable)
        return isLoadable.error();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return notLoaded(path, file.errorString());
    const QByteArray bytes = file.readAll();
    QStringList errors;
    Expected<LibraryCopy> inMemory = LibraryCopy::inMemory(bytes);
    if (!inMemory)
        errors.append(inMemory.error().text);
    else if (void* library = openCopy(*inMemory, &errors))
        return resolved(std::make_shared<Handle>(library, inMemory->takeDescriptor(), true), path);
    for (const QString& folder : temporaryFolders()) {
        const Expected<LibraryCopy> copy = LibraryCopy::inFolder(bytes, {folder});
        if (!copy) {
            errors.append(copy.error().text);
            continue;
        }
        if (void* library = openCopy(*copy, &errors))
            return resolved(std::make_shared<Handle>(library, -1, true), path);
    }
    return notLoaded(
        path, QStringLiteral("there is no room for a copy: ") + errors.join(QStringLiteral("; ")));
}

Expected<DriverLibrary> DriverLibrary::resolved(std::shared_ptr<Handle> handle, const QString& path)
{
    Resolver resolver(handle->library());
    handle->functions = resolveAll(&resolver);
    if (!resolver.missing().isEmpty()) {
        return Error{QStringLiteral("%1 is no PLC driver of this interface: it lacks %2")
                         .arg(path, resolver.missing().join(QStringLiteral(", ")))};
    }
    return DriverLibrary(std::move(handle));
}

const DriverFunctions& DriverLibrary::functions() const
{
    return m_handle->functions;
}

Expected<DriverClaim> DriverLibrary::take() const
{
    Expected<DriverClaim> claim = DriverClaim::take(m_handle->functions);
    if (claim)
        claim->m_library = m_handle;
    return claim;
}

Expected<QString> findDriver(const QString& requested, const QString& programFolder)
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
    QString error =
        QStringLiteral("%1 is in none of %2; give its path with --driver or in PLC_DRIVER")
            .arg(QString::fromLatin1(kFileName), folders.join(QStringLiteral(", ")));
    const QStringList others = librariesForOtherQts(folders);
    if (!others.isEmpty())
        error += QStringLiteral(". This program uses Qt %1 and cannot use %2")
                     .arg(QString::number(QT_VERSION_MAJOR), others.join(QStringLiteral(", ")));
    return Error{error};
}

} // namespace plc::host
