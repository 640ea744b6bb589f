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

/// Major version of the Qt that a library was built for: its file names Qt's Core library among
/// those that are loaded with it. 0 when it names none, or several. The file is read, not loaded.
int qtMajorOf(const QString& path);

/// Loads the library at `path` if it was built for the Qt of this program. On failure returns false
/// and sets `error`.
bool loadDriver(const QString& path, Driver* driver, QString* error);

/// Loads a copy of the library for the PLC of this number, made in `folder`: an object of its own.
bool loadCopy(const QString& path, const QString& folder, int plc, Driver* driver, QString* error);

} // namespace example

#endif
