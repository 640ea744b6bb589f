#include "load_driver.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QLibrary>

namespace example {

int qtMajorOf(const QString& path)
{
    const char* const kCoreLibraries[] = {"libQtCore.so.4", "libQt5Core.so.5", "libQt6Core.so.6"};
    const int kFirstMajor = 4;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray content = file.readAll();
    int major = 0;
    for (int i = 0; i < 3; ++i) {
        if (!content.contains(kCoreLibraries[i]))
            continue;
        if (major != 0)
            return 0;
        major = kFirstMajor + i;
    }
    return major;
}

template <typename Function>
bool resolve(QLibrary& library, const char* name, Function* function)
{
    *function = reinterpret_cast<Function>(library.resolve(name));
    return bool(*function);
}

bool loadDriver(const QString& path, Driver* driver, QString* error)
{
    const int kOwnQt = QT_VERSION >> 16;
    const int qt = qtMajorOf(path);
    if (qt != kOwnQt) {
        *error = path +
                 (qt == 0 ? QStringLiteral(" does not say for which Qt it was built")
                          : QStringLiteral(" was built for Qt %1").arg(qt)) +
                 QStringLiteral("; the driver for Qt %1 is needed").arg(kOwnQt);
        return false;
    }
    QLibrary library(path); // stays loaded when this object goes
    const bool complete = resolve(library, "SetComInfo", &driver->setComInfo) &&
                          resolve(library, "ComCommunication", &driver->comCommunication) &&
                          resolve(library, "DataCom", &driver->dataCom);
    if (!complete)
        *error = library.errorString();
    return complete;
}

bool loadCopy(const QString& path, const QString& folder, int plc, Driver* driver, QString* error)
{
    const QString copy = QDir(folder).filePath(QStringLiteral("plc_driver_%1.so").arg(plc));
    if (!QFile::copy(path, copy)) { // which never replaces a file
        *error = QStringLiteral("cannot copy %1 to %2").arg(path, copy);
        return false;
    }
    return loadDriver(copy, driver, error);
}

} // namespace example
