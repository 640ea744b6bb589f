#include "load_driver.h"

#include <QtCore/QLibrary>

namespace example {

template <typename Function>
bool resolve(QLibrary& library, const char* name, Function* function)
{
    *function = reinterpret_cast<Function>(library.resolve(name));
    return *function != nullptr;
}

bool loadDriver(const QString& path, Driver* driver, QString* error)
{
    QLibrary library(path); // stays loaded when this object goes
    const bool complete = resolve(library, "SetComInfo", &driver->setComInfo) &&
                          resolve(library, "ComCommunication", &driver->comCommunication) &&
                          resolve(library, "DataCom", &driver->dataCom);
    if (!complete)
        *error = library.errorString();
    return complete;
}

} // namespace example
