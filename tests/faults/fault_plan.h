#ifndef PLC_TESTS_FAULTS_FAULT_PLAN_H
#define PLC_TESTS_FAULTS_FAULT_PLAN_H

#include <QtCore/QByteArray>

#include "support/random.h"

namespace plc::faults {

/// What happens to a new connection.
enum class ConnectionFault {
    None,
    Close, ///< Closed as soon as it is made.
    Reset,
    Silence,  ///< Made, but nothing ever comes.
    Deafness, ///< Nobody listens for a while.
};

/// What happens to a request on its way to the PLC.
enum class RequestFault {
    None,
    Lose,
    Reset,       ///< The connection is reset in its place.
    WrongMark,   ///< It does not begin as a frame.
    WrongLength, ///< Its header announces another length.
    SlowBytes,   ///< It arrives byte by byte.
};

/// What happens to a reply on its way to the host.
enum class ReplyFault {
    None,
    Delay, ///< It comes later, but in time.
    Late,  ///< It comes when the host has stopped waiting.
    Lose,
    Twice,
    TwiceApart, ///< The second copy comes a little later.
    HalfAndSilence,
    HalfAndClose,
    HalfAndReset,
    WrongMark,
    WrongLength, ///< Its header announces another length.
    WrongStatus,
    WrongData,
    OnlyStatus, ///< A refusal comes in its place.
    Longer,     ///< A whole frame, but with bytes more than it has.
    Shorter,    ///< A whole frame, but with bytes fewer than it has.
    SlowBytes,  ///< It arrives byte by byte.
    Stall,      ///< From now on nothing passes in either direction; the connection stays open.
    Close,
    Reset,
    RubbishBefore,
    RubbishBehind,
};

/// Faults of one run, drawn from a seed. After a number of them nothing goes wrong any more.
class FaultPlan {
public:
    FaultPlan(test::Random* random, int faults) : m_random(random), m_left(faults) {}

    bool isFinished() const { return m_left == 0; }
    void finish() { m_left = 0; }

    ConnectionFault connectionFault();
    RequestFault requestFault();
    /// `isAcknowledgement`: it answers a write, and looks like any other answer to a write.
    ReplyFault replyFault(bool isAcknowledgement);

    /// The frame with this damage; the other faults leave it as it is.
    QByteArray damaged(RequestFault fault, QByteArray request);
    QByteArray damaged(ReplyFault fault, QByteArray reply);

    QByteArray rubbish();
    int between(int lowest, int highest) { return m_random->between(lowest, highest); }

private:
    bool strikes(int oneIn);
    QByteArray withOtherLength(QByteArray frame);

    test::Random* m_random;
    int m_left;
};

} // namespace plc::faults

#endif
