#ifndef PLC_GATEWAY_MODEL_PUBLISHER_H
#define PLC_GATEWAY_MODEL_PUBLISHER_H

#include <QtCore/QVector>

#include <optional>

#include "gateway/model/message.h"
#include "gateway/model/metric.h"
#include "gateway/model/write_request.h"

namespace plc::gateway {

/// What the gateway tells of itself.
struct NodeState {
    QString version;
    quint64 stored = 0;  ///< Changes that wait for a broker.
    quint64 dropped = 0; ///< Changes that no consumer will ever see, since the store was made.
};

/// What came of a message from the broker.
struct Received {
    bool isRebirthWanted = false;
    QVector<WriteRequest> writes;
    QString complaint; ///< Of a message that makes no sense: why; for the log, which has its topic.
};

/// The convention in which values go to consumers: which messages, on which topics. It has neither
/// connection nor clock; `time` is milliseconds since 1970-01-01T00:00:00Z.
///
/// 1. A session begins with connected() and ends with disconnected().
/// 2. In a session, once mayPublish(), opening() comes first. It may come again (rebirth); devices
///    that had begun begin again after it.
/// 3. Of a device only begun ones are told: deviceBegins(), then changes(), then deviceEnds().
/// 4. What the functions give is published in this order, on one connection, or the session is
///    at an end.
class Publisher {
public:
    virtual ~Publisher() = default;

    /// Devices have numbers, which the caller gives and which stay in use until removed; a number
    /// is not given to another device within a session. Devices may come and go in a session.
    virtual void addDevice(int number, const Device& device) = 0;
    virtual void removeDevice(int number) = 0;

    /// What the broker is to publish when the connection that is about to be made is lost.
    virtual std::optional<Message> nextWill(qint64 time) = 0;
    virtual QVector<Subscription> subscriptions() const = 0;
    /// The broker has taken the connection and the subscriptions.
    virtual void connected() = 0;
    virtual void disconnected() = 0;
    /// Whether consumers are there: false until the primary host is online, where there is one.
    virtual bool mayPublish() const = 0;
    /// Whether this connection should end, and the next broker be tried: the primary host went
    /// offline.
    virtual bool isToLeave() const = 0;

    /// Begins, or begins again, what consumers know.
    virtual QVector<Message> opening(const NodeState& state, qint64 time) = 0;
    /// The node's own values, where they differ from those told last.
    virtual QVector<Message> nodeChanges(const NodeState& state, qint64 time) = 0;
    /// `samples` has one for each metric of the device, in their order.
    virtual QVector<Message> deviceBegins(int number, const QVector<Sample>& samples,
                                          qint64 time) = 0;
    /// Changes of one pass, at most one of each metric.
    virtual QVector<Message> changes(int number, const QVector<Sample>& samples, qint64 time) = 0;
    /// Changes from before, which no consumer has seen yet or which it may have missed; in the
    /// order of their times, of a metric any number.
    virtual QVector<Message> history(int number, const QVector<Sample>& samples, qint64 time) = 0;
    virtual QVector<Message> deviceEnds(int number, qint64 time) = 0;
    /// How a write ended. The device may be unknown.
    virtual QVector<Message> outcome(const WriteOutcome& outcome, qint64 time) = 0;
    /// What is to be said before the connection is closed on purpose.
    virtual QVector<Message> closing(qint64 time) = 0;

    /// Whether a message that a broker keeps on this topic is one that the devices of now have it
    /// keep.
    virtual bool isKept(const QString& topic) const = 0;

    /// A message from the broker. Whatever it holds, it is answered by a Received.
    virtual Received received(const Message& message, qint64 time) = 0;
};

} // namespace plc::gateway

#endif
