#include "gateway/broker/mosquitto_broker.h"

#include "gateway/broker/client_id.h"
#include "gateway/broker/mosquitto_connection.h"

namespace plc::gateway {

MosquittoBroker::MosquittoBroker(const QString& clientId, int keepAlive, BrokerListener* listener)
    : m_clientId(clientId), m_keepAlive(keepAlive), m_listener(listener)
{
}

MosquittoBroker::~MosquittoBroker()
{
    if (m_last)
        m_last->forgetOwner();
    if (m_connection)
        m_connection->drop(QStringLiteral("ended"));
}

void MosquittoBroker::open(const BrokerSettings& settings, const std::optional<Message>& will,
                           const QVector<Subscription>& subscriptions)
{
    const auto wake = [this] { m_inbox.post([this] { takeEvents(); }); };
    // One that was dropped may take its time to end, and has nothing to tell any more.
    if (m_last)
        m_last->forgetOwner();
    m_connection = std::make_shared<MosquittoConnection>(
        clientId(m_clientId, settings), m_keepAlive, settings, will, subscriptions, wake);
    m_last = m_connection;
    m_connection->start();
}

void MosquittoBroker::publish(const Message& message)
{
    if (m_connection)
        m_connection->publish(message);
}

void MosquittoBroker::askConfirmation(quint64 mark)
{
    if (m_connection)
        m_connection->askConfirmation(mark);
}

void MosquittoBroker::close()
{
    if (m_connection)
        m_connection->close();
}

void MosquittoBroker::drop(const QString& reason)
{
    if (m_connection)
        m_connection->drop(reason);
}

void MosquittoBroker::waitForEnd(int milliseconds)
{
    if (m_last)
        m_last->waitForEnd(milliseconds);
}

void MosquittoBroker::takeEvents()
{
    // A copy: the listener may have begun another connection meanwhile.
    const std::shared_ptr<MosquittoConnection> connection = m_connection;
    if (!connection)
        return;
    for (const BrokerEvent& event : connection->takeEvents()) {
        if (connection != m_connection)
            return;
        switch (event.kind) {
            case BrokerEvent::Connected:
                m_listener->brokerConnected();
                break;
            case BrokerEvent::Lost:
                m_connection.reset();
                m_listener->brokerLost(event.reason);
                break;
            case BrokerEvent::Arrived:
                m_listener->messageArrived(event.message);
                break;
            case BrokerEvent::Dropped:
                m_listener->messagesDropped(event.number);
                break;
            case BrokerEvent::Confirmed:
                m_listener->confirmed(event.number);
                break;
        }
    }
}

} // namespace plc::gateway
