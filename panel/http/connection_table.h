#ifndef PLC_PANEL_HTTP_CONNECTION_TABLE_H
#define PLC_PANEL_HTTP_CONNECTION_TABLE_H

#include <QtCore/QString>

#include <functional>
#include <map>
#include <vector>

namespace plc::panel {

/// What a connection is about.
enum class Phase { Idle, Receiving, Answering, Sending, Streaming, Ending };

/// How many connections may be there, and how long each phase of one may last (ms).
struct ConnectionLimits {
    int connections = 0;
    int ofAddress = 0;
    qint64 idle = 0;
    qint64 receiving = 0;
    qint64 answering = 0;
    qint64 sending = 0;   ///< For the next sentBytes, or for what is left.
    qint64 sentBytes = 0; ///< 0: `sending` is for all.
};

/// All connections of a server: who is let in, and whose time is over. Where there are too many,
/// the one that has been idle for longest makes room, so that connections that only lie there keep
/// nobody out.
class ConnectionTable {
public:
    using Id = quint64;
    /// Ends a connection that is in the table, so that it is removed a little later.
    using End = std::function<void(Id)>;

    ConnectionTable(const ConnectionLimits& limits, End end)
        : m_limits(limits), m_end(std::move(end))
    {
    }

    /// Whether one more connection of this address may come. Times are in ms, of a clock that never
    /// goes back.
    bool admit(const QString& address);
    Id add(const QString& address, qint64 now);
    void enter(Id id, Phase phase, qint64 now);
    /// So many bytes of what is being sent are on their way. Whoever reads steadily gets the time
    /// again and again, however much there is; whoever reads next to nothing does not.
    void sent(Id id, qint64 bytes, qint64 now);
    void remove(Id id) { m_entries.erase(id); }
    /// Ends all connections whose time is over, but those that wait for an answer of our own: they
    /// are returned.
    std::vector<Id> endOverdue(qint64 now);

    int size() const { return int(m_entries.size()); }
    qint64 ended() const { return m_ended; }

private:
    struct Entry {
        QString address;
        Phase phase = Phase::Idle;
        qint64 since = 0;
        qint64 sent = 0; ///< Bytes that were on their way at `since`.
    };

    qint64 limitOf(Phase phase) const;
    bool makeRoom(const QString* address);
    void end(Id id);

    const ConnectionLimits m_limits;
    const End m_end;
    std::map<Id, Entry> m_entries;
    Id m_last = 0;
    qint64 m_ended = 0;
};

} // namespace plc::panel

#endif
