#ifndef PLC_GATEWAY_BROKER_BROKER_H
#define PLC_GATEWAY_BROKER_BROKER_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "gateway/config/settings.h"
#include "gateway/model/message.h"

namespace plc::gateway {

/// What a connection to a broker tells, in the thread of its owner and never from inside a call.
class BrokerListener {
public:
    virtual ~BrokerListener() = default;

    /// The connection is made and all subscriptions are taken.
    virtual void brokerConnected() = 0;
    /// The connection could not be made, was lost, or has been closed. What was published since the
    /// last confirmed mark may have reached the broker or not.
    virtual void brokerLost(const QString& reason) = 0;
    virtual void messageArrived(const Message& message) = 0;
    /// So many messages came faster than they could be taken, and are gone.
    virtual void messagesDropped(quint64 count) = 0;
    /// The broker has everything that was published before this mark.
    virtual void confirmed(quint64 mark) = 0;
};

/// One connection to one broker at a time. Nothing here waits.
class Broker {
public:
    virtual ~Broker() = default;

    /// Begins a connection; ends in brokerConnected() or brokerLost(). There must be none.
    virtual void open(const BrokerSettings& settings, const std::optional<Message>& will,
                      const QVector<Subscription>& subscriptions) = 0;
    /// Only between brokerConnected() and brokerLost() or close().
    virtual void publish(const Message& message) = 0;
    virtual void askConfirmation(quint64 mark) = 0;
    /// Closes in good order, behind what was published; ends in brokerLost().
    virtual void close() = 0;
    /// Drops the connection as it is, so that the broker publishes the will; ends in brokerLost().
    virtual void drop(const QString& reason) = 0;
};

} // namespace plc::gateway

#endif
