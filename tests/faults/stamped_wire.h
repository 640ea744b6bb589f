#ifndef PLC_TESTS_FAULTS_STAMPED_WIRE_H
#define PLC_TESTS_FAULTS_STAMPED_WIRE_H

#include <QtCore/QByteArray>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <deque>

#include "faults/stamped_plc.h"
#include "support/random.h"

namespace plc::faults {

/// What the first whole frame that came after a request is.
enum class Arrival {
    Nothing, ///< None came yet, or what came gives itself away by bytes behind it or by its size.
    OwnReply,
    SecondCopy, ///< Of an earlier reply that looks just like the awaited one.
    OtherReply, ///< Something that the host can tell from the awaited reply.
    LoginCopy   ///< To a frame of the login: a copy of an earlier reply.
};

/// The connection of a host to a stamped PLC, without sockets and clock, and what goes wrong on it.
class StampedWire {
public:
    /// `turnaround`: milliseconds from a request to its reply. A reply that is delayed stays within
    /// `replyTimeout` or is far beyond it.
    StampedWire(StampedPlc* plc, test::Random* random, int turnaround, int replyTimeout, int faults)
        : m_plc(plc),
          m_random(random),
          m_turnaround(turnaround),
          m_replyTimeout(replyTimeout),
          m_faultsLeft(faults)
    {
    }

    bool hasFaultsLeft() const { return m_faultsLeft > 0; }
    void finishFaults() { m_faultsLeft = 0; }
    /// Whether something is to go wrong now; counts it.
    bool strikes(int oneIn);
    void setTurnaround(int milliseconds) { m_turnaround = milliseconds; }

    void open(qint64 now);
    void close() { m_isOpen = false; }
    bool isOpen() const { return m_isOpen; }
    int connection() const { return m_connection; }

    void send(const QByteArray& request, qint64 now);
    /// When something comes next; -1: nothing does.
    qint64 nextEvent() const;
    /// All that has come up to now.
    QByteArray take(qint64 now);
    /// Whether the PLC has closed the connection, and everything before it was taken.
    bool isClosedByPlc(qint64 now) const;
    /// What came after the last request, as far as it was taken.
    Arrival arrival() const;

    /// What went wrong, for the report of a run that fails.
    const QStringList& history() const { return m_history; }
    void note(const QString& text, qint64 now);

private:
    enum class Fault;
    /// A whole frame to the host, and which request of the connection it answers.
    struct Frame {
        QByteArray bytes;
        int request = 0;
        int service = 0;
    };
    struct Piece {
        qint64 at;
        QByteArray bytes;
    };
    struct Replay {
        qint64 at;
        Frame frame;
    };

    void deliver(const Frame& reply, Fault fault, qint64 now);
    void replayLater(const Frame& frame, qint64 now);
    void push(const QVector<Frame>& frames, qint64 at, bool inPieces = false);
    void pushInFront(const Frame& frame, qint64 now);
    void pushBytes(const QByteArray& bytes, qint64 at);
    const Frame& earlierReply(const Frame& likeThis);
    void startReplays(qint64 now);

    StampedPlc* const m_plc;
    test::Random* const m_random;
    int m_turnaround;
    const int m_replyTimeout;
    int m_faultsLeft;

    bool m_isOpen = false;
    bool m_isStalled = false; ///< Nothing more comes.
    int m_connection = 0;
    qint64 m_closesAt = -1;
    int m_requests = 0;           ///< On this connection.
    int m_service = 0;            ///< Of the last one.
    int m_goodSize = 0;           ///< Of a good reply to it.
    std::deque<Piece> m_pieces;   ///< On their way.
    std::deque<Frame> m_frames;   ///< In the order of the pieces; those taken go with a request.
    int m_taken = 0;              ///< Bytes since the last request.
    std::deque<Replay> m_replays; ///< That are to be sent.
    std::deque<Frame> m_earlier;  ///< All replies of the connection.
    QStringList m_history;
};

} // namespace plc::faults

#endif
