#include "panel/http/suspension.h"

#include <microhttpd.h>

namespace plc::panel {

bool Suspension::suspend()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isAwake || m_hasEnded || !m_connection) {
        m_isAwake = false;
        return false;
    }
    m_isSuspended = true;
    ::MHD_suspend_connection(m_connection);
    return true;
}

void Suspension::wake()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isSuspended)
        resume();
    else
        m_isAwake = true;
}

void Suspension::end()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hasEnded = true;
    if (m_isSuspended)
        resume();
}

bool Suspension::hasEnded() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_hasEnded;
}

void Suspension::expire()
{
    constexpr unsigned int kSoon = 1; // s
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_connection)
        ::MHD_set_connection_option(m_connection, MHD_CONNECTION_OPTION_TIMEOUT, kSoon);
}

void Suspension::forget()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connection = nullptr;
}

void Suspension::resume()
{
    m_isSuspended = false;
    ::MHD_resume_connection(m_connection);
}

} // namespace plc::panel
