#ifndef PLC_HOST_LINK_SESSION_H
#define PLC_HOST_LINK_SESSION_H

#include <QtCore/QByteArray>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <map>

#include "host/driver/driver_functions.h"
#include "host/link/backoff.h"
#include "host/wire/frame_entries.h"
#include "host/wire/reply_collector.h"
#include "values/export.h"

namespace plc::host {

/// Times in milliseconds.
struct SessionTimes {
    int connectTimeout = 3000;
    int replyTimeout = 1000;  ///< For a whole reply.
    int reconnectDelay = 500; ///< After the first failure; doubled up to the limit.
    int reconnectDelayLimit = 10000;
    int cycleTime = 0; ///< From the start of one pass of cyclic reads to the next.
};

/// What the owner of a session does for it, in this order.
struct SessionAction {
    enum Kind {
        Connect, ///< Open a new connection and answer with connected() or disconnected().
        Send,
        Close ///< Close the connection; nothing that still arrives on it counts.
    };
    Kind kind;
    QByteArray bytes; ///< To send.
};

/// A request as it was sent.
struct SentRequest {
    QByteArray frame;
    RequestContent content;
    int category = 0;  ///< RW_VAR::category of the variable at its head.
    qint64 sentAt = 0; ///< Milliseconds, as all times here.
};

/// How the driver judged a reply.
struct Answer {
    enum Kind {
        Accepted,
        Refused,   ///< A read that the PLC does not carry out.
        Retried,   ///< Not accepted; the request goes out again.
        Abandoned, ///< Not accepted, for the last time.
        LoginRefused,
        Misfit ///< No reply to this request, and so not shown to the driver; the link is lost.
    };
    Kind kind = Accepted;
    int result = 0;  ///< Of DataCom(); 0 when it was not asked.
    int status = -1; ///< In the reply; -1 when it has none.
    /// The reply to a write may as well be a second copy of an earlier reply of this connection. A
    /// later answer that is inStep proves that it was none.
    bool mayBeCopy = false;
    /// This reply cannot be one that is left over from a write, so none is left over.
    bool isInStep = false;
    /// Of a refused read: the login may be what the PLC refuses. The driver logs in anew, and
    /// whatever is refused should be asked for once more.
    bool isLoginDoubted = false;
};

enum class LinkState { Down, Connecting, Up };

/// What a session tells. Called from inside the session's events; may queue in the driver's lists
/// and call wake(), but no other event of the session.
class PLC_HOST_EXPORT SessionObserver {
public:
    virtual ~SessionObserver() = default;

    /// The driver is about to be asked for a request. `passIsDue` says whether cyclic reads may go
    /// out now. Returns whether something in the driver's lists should not wait for them.
    virtual bool prepareRequest(qint64 now, bool passIsDue) = 0;
    /// When prepareRequest() wants to be called at the latest; -1: no matter when.
    virtual qint64 preparesAt() const = 0;
    virtual void requestSent(const SentRequest& request) = 0;
    virtual void requestAnswered(const SentRequest& request, const Answer& answer,
                                 const QByteArray& reply, qint64 now) = 0;
    /// The link changed. When it goes down, everything that the driver had queued has been given
    /// up; `reason` says why, and the next attempt follows after `retryDelay` ms (-1: none).
    virtual void linkChanged(LinkState state, const QString& reason, int retryDelay) = 0;
};

/// The conversation between the driver and one PLC, without socket and clock: events come in with
/// the time, actions go out.
///
/// States:
/// 1. Stopped: nothing is wanted. So it begins, and so it ends with stop().
/// 2. Waiting: the link was lost or could not be made; the next attempt begins at the deadline.
/// 3. Connecting: the owner opens a connection, and has until the deadline for it.
/// 4. Ready: connected, and no request is under way. The next one goes out when the driver has one
///    and, if it is cyclic, its pass is due.
/// 5. Awaiting a reply: one request is under way, and has until the deadline for a whole reply.
///
/// Waiting, Connecting and Awaiting end at their deadlines at the latest. What the driver has
/// queued is given up whenever the link goes down.
///
/// The protocol has no transaction number. What ties a reply to its request:
///
/// 1. The request is the only one on the connection, and its reply was there, and looked at, before
///    its time was over.
/// 2. A good reply to a read has the size that the request asks for, and is no copy of a reply to
///    the login.
/// 3. Nothing follows a reply before the next request.
/// 4. A reply to a write has no size that is known beforehand. When it has the size of an earlier
///    reply of the connection it may be a copy of that one; see Answer::mayBeCopy. It never is one
///    of a good reply to a read or to the login: the first time that an acknowledgement is as long
///    as such a reply, it is not believed; from then on those replies are kept to be compared.
///
/// Whenever that tie is in doubt the connection is closed and never used again.
///
/// A read that the PLC refuses is at an end with that: the driver is told that it is done and has
/// brought nothing, so that it keeps its login and goes on with the next request. A refused write
/// is handed to the driver, which repeats it as often as its settings say.
///
/// A PLC refuses everything when the login was damaged on its way, or when it has another program
/// since. So the driver logs in anew, on the same connection, when a read is refused
///
/// 1. before any was given since the connection was made, or
/// 2. with several before it in a row; if all go on being refused, again after many more.
class PLC_HOST_EXPORT Session {
public:
    /// `settings` is the record that the driver was given; all must outlive the session.
    Session(const DriverFunctions& driver, ComInfo* settings, const SessionTimes& times,
            SessionObserver* observer);

    void start(qint64 now);
    /// Closes the link; what is under way is given up.
    void stop();
    void connected(qint64 now);
    /// The connection could not be made or was lost.
    void disconnected(const QString& reason, qint64 now);
    void received(const QByteArray& bytes, qint64 now);
    /// Time has passed.
    void tick(qint64 now);
    /// Something was queued or switched: see whether a request can go out now. Inside another event
    /// there is no need to: it does so at its end.
    void wake(qint64 now);

    /// What to do now; each action is handed out once.
    QVector<SessionAction> takeActions();
    /// When tick() wants to be called next; -1: never.
    qint64 nextDeadline() const;

    LinkState linkState() const;
    /// Entries of the driver's cyclic list, which make one pass.
    void setCyclicEntries(int count) { m_cyclicEntries = count; }
    /// Passes in which every entry was asked for, whether the PLC gave it or not.
    quint64 passes() const { return m_passes; }
    /// Whether a reply to a write of this connection had this size.
    bool hasAcknowledged(int replySize) const { return m_writeReplySizes.contains(replySize); }

private:
    enum class State { Stopped, Waiting, Connecting, Ready, AwaitingReply };

    void connectNow(qint64 now);
    void requestNext(qint64 now);
    void send(const Protocol& request, qint64 now);
    void takeReply(qint64 now);
    QString misfitReason(const QByteArray& reply);
    QString lateReason() const;
    bool isSecondCopy(const QByteArray& reply) const;
    bool isLoginCopy(const QByteArray& reply) const;
    QString acknowledgementMisfit(const QByteArray& reply);
    void keepForComparison(const QByteArray& reply);
    Answer judge(const QByteArray& reply);
    Answer endRefusedRead(int status);
    bool isLoginDoubted() const;
    void noteSize(const QByteArray& reply, Answer* answer);
    Answer handOver(QByteArray reply);
    void noteAccepted(qint64 now);
    void countPass(qint64 now);
    void loseLink(const QString& reason, qint64 now);
    void close(State next);
    void giveUpEverything();
    void giveUpRequest();
    void forgetLogin();

    const DriverFunctions& m_driver;
    ComInfo* const m_settings;
    const SessionTimes m_times;
    SessionObserver* const m_observer;

    State m_state = State::Stopped;
    bool m_isInEvent = false;
    qint64 m_deadline = 0; ///< Of the attempt, the connection or the reply that m_state waits for.
    bool m_idle = false;   ///< The driver has nothing to send.
    Backoff m_backoff;
    QVector<SessionAction> m_actions;

    SentRequest m_request;
    bool m_sizeIsOpen = false; ///< The driver has not been told the size of the reply yet.
    ReplyCollector m_collector;
    std::map<Service, QByteArray> m_lastReplies; ///< To each service on this connection.
    QSet<int> m_replySizes;                      ///< Of all replies on this connection.
    QSet<int> m_writeReplySizes;                 ///< Of those to writes.
    QSet<int> m_goodReplySizes;                  ///< Of good replies to the login and to reads.
    /// Sizes of acknowledgements that may be those of other replies, on any connection.
    QSet<int> m_comparedSizes;
    QSet<QByteArray> m_compared; ///< Good replies of such a size on this connection.
    int m_comparedBytes = 0;
    bool m_isInStep = true;        ///< No reply can be left over on this connection.
    bool m_isWriteDoubted = false; ///< Because the reply to a write may have been a copy.
    bool m_loginWasAlike = false;  ///< Both replies of the login before this one were the same.
    bool m_hasGivenReads = false;  ///< The PLC gave a read on this connection.
    qint64 m_refusedInARow = 0;    ///< Reads since the last one that was given.

    int m_cyclicEntries = 0;
    int m_entriesOfPass = 0; ///< Asked for so far.
    quint64 m_passes = 0;
    qint64 m_passStart = 0;
    qint64 m_nextPassAt = 0; ///< Until then only what is urgent is sent.
};

} // namespace plc::host

#endif
