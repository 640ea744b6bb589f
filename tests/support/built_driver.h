#ifndef PLC_TESTS_SUPPORT_BUILT_DRIVER_H
#define PLC_TESTS_SUPPORT_BUILT_DRIVER_H

#include <gtest/gtest.h>

#include "host/driver/driver_library.h"

namespace plc {
namespace test {

/// The library that was built with the tests. Loaded once: the driver of a host stays for as long
/// as the host runs.
inline const host::DriverFunctions& builtDriver()
{
    static const host::DriverFunctions functions = [] {
        QString error;
        const std::optional<host::DriverFunctions> loaded =
            host::loadDriver(QStringLiteral(PLC_LIBRARY), &error);
        if (!loaded)
            ADD_FAILURE() << error.toStdString();
        return loaded.value_or(host::DriverFunctions());
    }();
    return functions;
}

} // namespace test
} // namespace plc

#endif
