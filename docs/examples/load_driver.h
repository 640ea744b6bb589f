#ifndef PLC_DOCS_EXAMPLES_LOAD_DRIVER_H
#define PLC_DOCS_EXAMPLES_LOAD_DRIVER_H

#include <QtCore/QString>

#include "plc_driver.h"

namespace example {

/// The entry points that a host uses, as far as this example goes.
struct Driver {
    decltype(&SetComInfo) setComInfo = nullptr;
    decltype(&ComCommunication) comCommunication = nullptr;
    decltype(&DataCom) dataCom = nullptr;
};

/// Loads the library at `path`. On failure returns false and sets `error`.
bool loadDriver(const QString& path, Driver* driver, QString* error);

} // namespace example

#endif
