#ifndef PLC_GATEWAY_BROKER_MOSQUITTO_BROKER_H
#define PLC_GATEWAY_BROKER_MOSQUITTO_BROKER_H

#include <memory>

#include "gateway/broker/broker.h"
#include "service/inbox.h"

namespace plc::gateway {

class MosquittoConnection;

/// Connections to brokers by libmosquitto. Each has a thread of its own for names, TLS and the
/// socket; the listener is called by the event loop of the thread in which this object lives.
class MosquittoBroker : public Broker {
public:
    /// `clientId` must be another one for each gateway of a broker; host and port of the broker are
    /// put behind it. `listener` must outlive this.
    MosquittoBroker(const QString& clientId, int keepAlive, BrokerListener* listener);
    /// A connection that is still there is dropped.
    ~MosquittoBroker() override;

    void open(const BrokerSettings& settings, const std::optional<Message>& will,
              const QVector<Subscription>& subscriptions) override;
    void publish(const Message& message) override;
    void askConfirmation(quint64 mark) override;
    void close() override;
    void drop(const QString& reason) override;

    /// Waits for `milliseconds` at most until the last connection is gone, for the end of a
    /// process.
    void waitForEnd(int milliseconds);

private:
    friend class MosquittoConnection;
    void takeEvents();

    const QString m_clientId;
    const int m_keepAlive;
    BrokerListener* const m_listener;
    std::shared_ptr<MosquittoConnection> m_connection;
    std::shared_ptr<MosquittoConnection> m_last;
    service::Inbox m_inbox; ///< Of what the threads of the connections have to tell.
};

} // namespace plc::gateway

#endif
