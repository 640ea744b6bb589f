#ifndef PLC_PANEL_HTTP_LINGERING_SOCKETS_H
#define PLC_PANEL_HTTP_LINGERING_SOCKETS_H

#include <QtCore/QtGlobal>

#include <mutex>
#include <vector>

namespace plc::panel {

/// Connections that have got their answer before they have sent all. A socket that is closed while
/// something comes in tells its client of an error in place of the answer; so a part is read and
/// forgotten before. How many there are, for how long and how much is read is bounded.
class LingeringSockets {
public:
    static constexpr int kMost = 64;
    static constexpr qint64 kTime = 5000; ///< ms
    static constexpr qint64 kMostBytes = qint64(16) * 1024 * 1024;

    LingeringSockets() = default;
    ~LingeringSockets();
    LingeringSockets(const LingeringSockets&) = delete;
    LingeringSockets& operator=(const LingeringSockets&) = delete;

    /// Goes on with a socket that is about to be closed. Nothing more is sent on it. For any
    /// thread; times are in ms, of a clock that never goes back.
    void add(int socket, qint64 now);
    /// Reads what is there, for a moment. For one thread, now and then.
    void drain(qint64 now);

private:
    struct Socket {
        int socket = -1;
        qint64 end = 0;
        qint64 read = 0;
    };

    void takeNew();
    bool readSome();
    void closeEnded(qint64 now);

    std::mutex m_mutex; ///< Guards the new ones.
    std::vector<Socket> m_new;
    std::vector<Socket> m_sockets; ///< Of the thread that drains.
};

} // namespace plc::panel

#endif
