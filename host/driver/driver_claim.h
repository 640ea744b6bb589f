#ifndef PLC_HOST_DRIVER_DRIVER_CLAIM_H
#define PLC_HOST_DRIVER_DRIVER_CLAIM_H

#include <memory>

#include "host/driver/driver_functions.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::host {

/// The use of a loaded driver, which one at a time has: with two on one driver, what one writes
/// goes to the PLC of the other. It is given back when this ends.
///
/// The driver itself is marked, in a word that it carries for its host. So it counts for all that
/// load the same file, and for every copy of this library in the process. A host that calls the
/// driver's functions by itself is seen if it has given FlashLocalRegister() a first memory.
///
/// May be taken and given back in any thread.
class PLC_HOST_EXPORT DriverClaim {
public:
    /// An error when the driver is taken. The library must stay loaded; DriverLibrary::take() sees
    /// to that by itself.
    static Expected<DriverClaim> take(const DriverFunctions& driver);

    DriverClaim(DriverClaim&& other) noexcept;
    DriverClaim& operator=(DriverClaim&&) = delete;
    ~DriverClaim();

    const DriverFunctions& functions() const { return m_functions; }

private:
    friend class DriverLibrary;
    explicit DriverClaim(const DriverFunctions& driver) : m_functions(driver) {}

    DriverFunctions m_functions;           ///< Without a host's word when it was moved from.
    std::shared_ptr<const void> m_library; ///< What keeps the library loaded, if this does.
};

} // namespace plc::host

#endif
