#ifndef PLC_GATEWAY_BROKER_MOSQUITTO_CONNECTION_H
#define PLC_GATEWAY_BROKER_MOSQUITTO_CONNECTION_H

#include <QtCore/QStringList>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "gateway/config/settings.h"
#include "gateway/model/message.h"
#include "values/expected.h"

struct mosquitto;

namespace plc::gateway {

/// What happened on a connection.
struct BrokerEvent {
    enum Kind { Connected, Lost, Arrived, Dropped, Confirmed };
    Kind kind = Lost;
    QString reason;     ///< Lost
    Message message;    ///< Arrived
    quint64 number = 0; ///< Dropped: how many; Confirmed: the mark.
};

/// One connection to a broker from its beginning to its end.
///
/// 1. start() gives it a thread, which ends by itself when the connection is lost or wanted no
///    more. The thread keeps the connection alive, so that its owner never waits for it: asking for
///    a name may take many seconds.
/// 2. Events wait until they are taken. `wake` is called in the thread when there are some where
///    there were none, and never again after forgetOwner().
/// 3. Lost is the last event.
/// 4. Of what is published only so much is on its way at a time; the rest waits here, in order.
/// 5. What consumers send is kept up to a limit; what comes beyond it is counted and gone. Vital
///    topics have a limit of their own, beyond which the connection is dropped.
class MosquittoConnection : public std::enable_shared_from_this<MosquittoConnection> {
public:
    MosquittoConnection(const QString& clientId, int keepAlive, const BrokerSettings& settings,
                        const std::optional<Message>& will,
                        const QVector<Subscription>& subscriptions, std::function<void()> wake);
    ~MosquittoConnection();
    MosquittoConnection(const MosquittoConnection&) = delete;
    MosquittoConnection& operator=(const MosquittoConnection&) = delete;

    void start();
    void publish(const Message& message);
    void askConfirmation(quint64 mark);
    void close();
    void drop(const QString& reason);
    std::deque<BrokerEvent> takeEvents();
    void forgetOwner();
    /// Whether the thread has ended within this time.
    bool waitForEnd(int milliseconds);

private:
    enum class End { None, Close, Drop };

    /// What is to go out: a message, or the question for a mark.
    struct Step {
        bool isMark = false;
        quint64 mark = 0;
        Message message;
    };

    /// Something the broker acknowledges, in the order in which it was handed over.
    struct Mark {
        quint64 number;
        quint64 behind; ///< All messages up to this one are to be acknowledged as well.
        int packet;
        bool isAnswered;
    };

    void run();
    Expected<void> prepare();
    void setCallbacks();
    Expected<void> setUser();
    Expected<void> prepareTls();
    QString converse();
    bool isOverdue() const;
    void handleConnected(int code);
    void handleSubscribed(int packet, bool isGranted);
    void handleAcknowledged(int packet);
    void handleUnsubscribed(int packet);
    void handleArrived(Message message);
    bool isVital(const QString& topic) const;
    void loseWith(const QString& reason);
    void enqueue(Step step);
    void handOver();
    /// None: nothing is to be handed over now.
    std::optional<Step> takeStep();
    Expected<void> send(const Message& message);
    Expected<void> ask(quint64 mark);
    void sayGoodbye();
    void confirmMarks();
    void post(BrokerEvent event);
    void tell(BrokerEvent event);

    const QByteArray m_clientId;
    const int m_keepAlive;
    const BrokerSettings m_settings;
    const std::optional<Message> m_will;
    const QVector<Subscription> m_subscriptions;
    /// Held by who hands something over, and by the thread when it ends m_handle. Never locked
    /// under m_mutex.
    std::mutex m_handleMutex;
    mosquitto* m_handle = nullptr;

    // The thread only:
    std::set<int> m_openSubscriptions;
    QString m_lostReason;
    QStringList m_loggedErrors; ///< What libmosquitto told.
    qint64 m_startedAt = 0;
    bool m_isConnected = false;

    std::mutex m_mutex;
    // Under m_mutex:
    std::function<void()> m_wake;
    std::deque<BrokerEvent> m_events;
    int m_arrivedEvents = 0;
    qint64 m_arrivedBytes = 0;
    int m_vitalEvents = 0;
    quint64 m_droppedMessages = 0;
    End m_end = End::None;
    qint64 m_endWantedAt = 0;
    QString m_endReason;
    bool m_isGoodbyeSaid = false;
    std::deque<Step> m_waiting;
    bool m_hasEnded = false;
    std::condition_variable m_ended;
    // Messages that are not acknowledged (at QoS 0: not handed to the socket), by packet number,
    // and packets whose acknowledgement came before publish() returned.
    std::unordered_map<int, quint64> m_open;
    std::set<quint64> m_openInOrder;
    std::set<int> m_early;
    quint64 m_published = 0;
    std::deque<Mark> m_marks;
};

} // namespace plc::gateway

#endif
