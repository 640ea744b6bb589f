#ifndef PLC_HOST_SESSION_H
#define PLC_HOST_SESSION_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <map>

#include "host/backoff.h"
#include "host/driver_library.h"
#include "host/frame_entries.h"
#include "host/reply_collector.h"

namespace plc {

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
    int category = 0; ///< RW_VAR::category of the variable at its head.
};

/// How the driver judged a reply.
struct Answer {
    enum Kind {
        Accepted,
        Retried,   ///< Not accepted; the request goes out again.
        Abandoned, ///< Not accepted, for the last time.
        LoginRefused,
        Misfit ///< No reply to this request, and so not shown to the driver; the link is lost.
    };
    Kind kind = Accepted;
    int result = 0;  ///< Of DataCom().
    int status = -1; ///< In the reply; -1 when it has none.
};

enum class LinkState { Down, Connecting, Up };

/// What a session tells. Called from inside the session's events; may queue in the driver's lists
/// and call wake(), but no other event of the session.
class SessionObserver {
public:
    virtual ~SessionObserver() = default;

    /// The driver is about to be asked for a request. Returns whether something in its lists should
    /// not wait for the next pass of cyclic reads.
    virtual bool prepareRequest() = 0;
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
/// The protocol has no transaction number. What ties a reply to its request is that the request is
/// the only one on the connection, that a good reply to a read has the size that the request asks
/// for, and that one to a write has none worth mentioning. Whenever that tie is in doubt (no whole
/// reply in time, bytes that nobody asked for, a reply of another size) the connection is closed
/// and never used again.
class Session {
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
    int passes() const { return m_passes; }

private:
    enum class State { Stopped, Waiting, Connecting, Ready, AwaitingReply };

    void connectNow(qint64 now);
    void requestNext(qint64 now);
    void send(const Protocol& request, qint64 now);
    void takeReply(qint64 now);
    QString misfitReason(const QByteArray& reply);
    bool isSecondCopy(const QByteArray& reply) const;
    Answer handOver(QByteArray reply);
    void noteAccepted(qint64 now);
    void noteAbandoned(qint64 now);
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
    qint64 m_sentAt = 0;
    bool m_sizeIsOpen = false; ///< The driver has not been told the size of the reply yet.
    ReplyCollector m_collector;
    std::map<Service, QByteArray> m_lastReplies; ///< To each service on this connection.
    bool m_loginWasAlike = false;                ///< Both replies of a login were the same once.
    int m_abandonedInARow = 0;

    int m_cyclicEntries = 0;
    int m_entriesOfPass = 0; ///< Asked for so far.
    int m_passes = 0;
    qint64 m_passStart = 0;
    qint64 m_nextPassAt = 0;    ///< Until then only what is urgent is sent.
    qint64 m_patienceUntil = 0; ///< Until then nothing is sent: the PLC keeps refusing.
};

} // namespace plc

#endif
