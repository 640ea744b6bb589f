#ifndef PLC_BENCH_PANEL_EVENT_READER_H
#define PLC_BENCH_PANEL_EVENT_READER_H

#include <QtCore/QByteArray>
#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include <vector>

namespace plc::bench {

/// One client of an event stream.
class EventReader {
public:
    /// One that does not `read` lets what it is sent lie. With `checks` the rows are looked at,
    /// each of which is a clock as its value: how old are they when they come?
    struct Manner {
        bool reads = true;
        bool checks = false;
    };

    EventReader(quint16 port, const QByteArray& subscription, const Manner& manner);

    void forget();
    bool hasEnded() const { return m_socket.state() == QAbstractSocket::UnconnectedState; }
    /// Reads and throws away what has come, to see whether there is an end behind it.
    void catchUp();

    qint64 bytes() const { return m_bytes; }
    /// Rows of all events, where they are checked.
    qint64 rows() const { return m_rows; }
    /// ms between the times at which the PLC was asked for the values and their coming, of each
    /// event the oldest.
    const std::vector<int>& ages() const { return m_ages; }
    /// The longest time between two events with values, in ms, where they are checked.
    qint64 longestGap() const { return m_longestGap; }

private:
    void read();
    void takeChunks();
    void takeLine(const QByteArray& line);

    const bool m_checks;
    QTcpSocket m_socket;
    bool m_isInBody = false;
    QByteArray m_coded; ///< Of the answer, what is not in m_pending.
    QByteArray m_pending;
    qint64 m_bytes = 0;
    qint64 m_rows = 0;
    std::vector<int> m_ages;
    qint64 m_longestGap = 0;
    QElapsedTimer m_sinceEvent;
};

} // namespace plc::bench

#endif
