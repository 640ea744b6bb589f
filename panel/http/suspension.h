#ifndef PLC_PANEL_HTTP_SUSPENSION_H
#define PLC_PANEL_HTTP_SUSPENSION_H

#include <mutex>

struct MHD_Connection;

namespace plc::panel {

/// Lets a connection rest while there is nothing to send on it.
///
/// Thread safety: wake() and end() may be called by any thread, also when the connection is no
/// more; the others by the thread of the connection's server.
class Suspension {
public:
    explicit Suspension(MHD_Connection* connection) : m_connection(connection) {}
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;

    /// Returns false, and lets nothing rest, when wake() was called since the last time, or after
    /// end().
    bool suspend();
    void wake();
    /// The connection never rests again, for a server can only be stopped when none does.
    void end();
    bool hasEnded() const;
    /// To be called when the reader of a response fails: libmicrohttpd closes the connection, but
    /// looks at it again only when something happens on its socket, which a client that reads
    /// nothing never lets happen, or when its time is over, as is soon then.
    void expire();
    /// The connection is no more.
    void forget();

private:
    void resume();

    mutable std::mutex m_mutex; ///< Guards all below.
    MHD_Connection* m_connection;
    bool m_isSuspended = false;
    bool m_isAwake = false;
    bool m_hasEnded = false;
};

} // namespace plc::panel

#endif
