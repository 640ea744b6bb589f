#ifndef PLC_TESTS_SUPPORT_BUILT_DRIVER_H
#define PLC_TESTS_SUPPORT_BUILT_DRIVER_H

#include <gtest/gtest.h>

#include "host/driver/driver_library.h"

namespace plc::test {

/// The library that was built with the tests. Loaded once: the driver of a host stays for as long
/// as the host runs.
inline const host::DriverFunctions& builtDriver()
{
    static const host::DriverFunctions functions = [] {
        const Expected<host::DriverLibrary> loaded =
            host::DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
        if (!loaded)
            ADD_FAILURE() << loaded.error().text.toStdString();
        return loaded ? loaded->functions() : host::DriverFunctions();
    }();
    return functions;
}

/// The same for a runtime; no other has it then.
inline host::DriverClaim takenDriver()
{
    return *host::DriverClaim::take(builtDriver());
}

} // namespace plc::test

#endif
