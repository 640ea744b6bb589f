#include "host/driver/driver_claim.h"

#include <utility>

namespace plc::host {
namespace {

// Compilers' own atomics: the word is the driver's, which is older than those of the standard.

/// Puts `to` in the place of `from`. Returns false where there is something else.
bool replace(void** word, void* from, void* to)
{
    return __atomic_compare_exchange_n(word, &from, to, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
}

} // namespace

Expected<DriverClaim> DriverClaim::take(const DriverFunctions& driver)
{
    if (!driver.hostWord)
        return Error{QStringLiteral("these are not the functions of a loaded driver")};
    if (!replace(driver.hostWord, nullptr, driver.hostWord)) {
        return Error{
            QStringLiteral("the driver serves another PLC already; each further one in a process "
                           "needs a copy of the driver, which DriverLibrary::loadCopy() makes")};
    }
    return DriverClaim(driver);
}

DriverClaim::DriverClaim(DriverClaim&& other) noexcept
    : m_functions(other.m_functions), m_library(std::move(other.m_library))
{
    other.m_functions.hostWord = nullptr;
}

DriverClaim::~DriverClaim()
{
    if (m_functions.hostWord)
        replace(m_functions.hostWord, m_functions.hostWord, nullptr);
}

} // namespace plc::host
