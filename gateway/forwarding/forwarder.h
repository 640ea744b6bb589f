#ifndef PLC_GATEWAY_FORWARDING_FORWARDER_H
#define PLC_GATEWAY_FORWARDING_FORWARDER_H

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QVector>

#include <deque>
#include <map>

#include "gateway/broker/broker.h"
#include "gateway/forwarding/kept_topics.h"
#include "gateway/forwarding/unconfirmed_samples.h"
#include "gateway/model/change_store.h"
#include "gateway/model/publisher.h"

namespace plc::gateway {

/// How much went where since the start.
struct ForwardingCounters {
    quint64 messages = 0;
    quint64 bytes = 0;
    quint64 live = 0;       ///< Changes that were published when they were found.
    quint64 historical = 0; ///< Changes that were published from the store.
    quint64 stored = 0;     ///< Changes that were put into the store.
    /// Outcomes of writes that were too many to be kept until they could be told.
    quint64 lostOutcomes = 0;
};

/// Takes changes to consumers: over the broker while it takes them, through the store while it does
/// not. It has neither clock nor connection; `now` is milliseconds of a clock that never goes back,
/// `time` milliseconds since 1970-01-01T00:00:00Z.
///
/// 1. A change is published once, or is in the store, or is on its way and will be stored if the
///    connection is lost before the broker has confirmed it. So it may arrive twice, but is not
///    lost, unless the store counts it as dropped.
/// 2. What the broker has not confirmed for a second is in the store, too.
/// 3. Stored changes are sent in their order, as history, at a limited rate; where live ones are
///    confirmed late, a few at a time. They leave the store when they are confirmed.
/// 4. A broker that takes too little gets no more live changes until it has caught up; then it
///    gets the last of each at once.
/// 5. A device that is away is announced only while there is history of it to be sent.
/// 6. What the broker keeps of values and devices that are no more is taken back: before a session
///    opens, and when they go.
class Forwarder {
public:
    /// All must outlive the forwarder; `record` may be null. `historyRate` is stored changes a
    /// second.
    Forwarder(Publisher* publisher, Broker* broker, ChangeStore* store, int historyRate,
              const QString& version, TopicRecord* record = nullptr);

    /// `told` has a sample for each metric. A number is never used again.
    void addDevice(int number, const Device& device, const QVector<Sample>& told);
    void removeDevice(int number, qint64 now, qint64 time);
    /// Devices were removed, and those that take their places are there.
    void removeStrangers(qint64 now);

    /// Whether the device is there, and what is new of its values.
    void update(int number, bool isAlive, const QVector<Sample>& samples, qint64 now, qint64 time);
    void tell(const WriteOutcome& outcome, qint64 now, qint64 time);

    /// `broker` is the name under which the record has its topics.
    void connected(qint64 now, qint64 time, const QString& broker = QString());
    void lost(qint64 now);
    void confirmed(quint64 mark);
    /// The publisher was shown a message, and may see consumers where there were none.
    void beginIfWanted(qint64 now, qint64 time);
    /// Begins everything anew: at once, or half a second after the last time; more wishes are one.
    void wantRebirth(qint64 now, qint64 time);

    /// To be called a few times a second.
    void tick(qint64 now, qint64 time);
    /// Stores what is only in memory.
    void flush(qint64 now);
    /// The end is near: what was published waits to be confirmed. False when nothing does.
    bool hasUnconfirmed() const { return !m_unconfirmed.isEmpty(); }

    bool isLive() const { return m_isLive; }
    bool isBegun(int number) const;
    /// The broker does not keep up.
    bool isCongested() const { return m_isCongested; }
    const ForwardingCounters& counters() const { return m_counters; }
    /// Of one device; the bytes are not counted.
    ForwardingCounters counters(int number) const;
    /// Why the store does not take changes; empty while it does.
    const QString& storeError() const { return m_storeError; }

private:
    struct State {
        Device device;
        QVector<QString> types; ///< typeText() of each metric.
        QHash<QString, int> metricsByName;
        QVector<Sample> told;
        bool isAlive = false;
        bool isBegun = false;      ///< In this session.
        bool isForHistory = false; ///< Begun, though it is away.
        QSet<int> heldBack;        ///< Metrics whose last change was not published live.
        ForwardingCounters counters;
    };

    bool takesLive() const { return m_isLive && !m_isCongested; }
    void begin(qint64 now, qint64 time);
    void beginDevice(int number, State* state, qint64 now, qint64 time);
    void endDevice(int number, State* state, qint64 now, qint64 time);
    void publishLive(int number, State* state, const QVector<Sample>& samples, qint64 now,
                     qint64 time);
    void countLive(int number, State* state, const QVector<Sample>& samples);
    void holdBack(int number, State* state, const QVector<Sample>& samples);
    StoredChange named(int number, const Sample& sample) const;
    void keepWhatIsOnTheWay();
    void limitOutcomes();
    void open(qint64 now, qint64 time);
    const NodeState& ownState(qint64 now);
    void endHistory(qint64 number, quint64 unsendable);
    void publish(const QVector<Message>& messages, qint64 now, State* state = nullptr);
    void askConfirmation();
    void storeUnconfirmed(qint64 now, int olderThan);
    void judgeCongestion(qint64 now, qint64 time);
    void catchUp(qint64 now, qint64 time);
    QVector<StoredChange> waitingHistory(qint64 behind, int count);
    void sendHistory(qint64 now, qint64 time);
    quint64 sendStored(const QVector<StoredChange>& changes, qint64 now, qint64 time);
    void sendHistoryOf(int number, const QVector<Sample>& samples, qint64 now, qint64 time);
    void endIdleDevices(qint64 now, qint64 time);
    void bearAgain(qint64 now, qint64 time);
    void tellOwnState(qint64 now, qint64 time);
    bool store(const QVector<StoredChange>& changes);
    void countStored(const QVector<StoredChange>& changes);
    int numberOf(const QString& device) const;

    Publisher* const m_publisher;
    Broker* const m_broker;
    ChangeStore* const m_store;
    const int m_historyRate;
    NodeState m_own;
    std::map<int, State> m_devices;
    bool m_isConnected = false;
    bool m_isLive = false;
    bool m_isCongested = false;
    UnconfirmedSamples m_unconfirmed;
    KeptTopics m_topics;
    QVector<StoredChange> m_kept; ///< To be stored.
    qint64 m_flushedAt = 0;
    QString m_storeError;
    bool m_isConfirming = false; ///< Something was confirmed in this session within a second.
    bool m_wasConfirmed = false; ///< Since the last tick.
    qint64 m_confirmedAt = 0;
    qint64 m_historySentTo = 0; ///< Number of the last stored change that was sent.
    double m_historyBudget = 0.0;
    qint64 m_lastTick = -1;
    bool m_isRebirthWanted = false;
    qint64 m_bornAt = 0;
    qint64 m_ownToldAt = 0;
    std::deque<WriteOutcome> m_outcomes; ///< That no broker was there for.
    ForwardingCounters m_counters;
};

} // namespace plc::gateway

#endif
