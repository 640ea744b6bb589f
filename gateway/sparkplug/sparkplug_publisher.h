#ifndef PLC_GATEWAY_SPARKPLUG_SPARKPLUG_PUBLISHER_H
#define PLC_GATEWAY_SPARKPLUG_SPARKPLUG_PUBLISHER_H

#include <functional>

#include "gateway/model/publisher.h"
#include "gateway/sparkplug/device_table.h"
#include "gateway/sparkplug/primary_host.h"
#include "gateway/sparkplug/topics.h"

namespace plc::gateway::wire {
class CommandMetric;
class Payload;
} // namespace plc::gateway::wire

namespace plc::gateway {

/// Who the gateway is to those that use Sparkplug. Names have none of the characters / + #.
struct SparkplugIdentity {
    QString group;
    QString node;
    QString primaryHost; ///< Empty: values are published whoever listens.
};

/// Sparkplug B 3.0: the gateway is an edge node, each PLC one of its devices. How writes ended is
/// told by the metric "Gateway/Write Outcome" of the device, or of the node where the device is not
/// there, in JSON. A command's `uuid` is the id that its outcomes carry.
class SparkplugPublisher : public Publisher {
public:
    /// `takeSessionNumber` is called for each connection: 0 to 255 in a circle, see
    /// ChangeStore::takeSessionNumber().
    SparkplugPublisher(const SparkplugIdentity& identity, std::function<int()> takeSessionNumber);

    void addDevice(int number, const Device& device) override;
    void removeDevice(int number) override;

    std::optional<Message> nextWill(qint64 time) override;
    QVector<Subscription> subscriptions() const override;
    void connected() override;
    void disconnected() override;
    bool mayPublish() const override;
    bool isToLeave() const override;

    QVector<Message> opening(const NodeState& state, qint64 time) override;
    QVector<Message> nodeChanges(const NodeState& state, qint64 time) override;
    QVector<Message> deviceBegins(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> changes(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> history(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> deviceEnds(int number, qint64 time) override;
    QVector<Message> outcome(const WriteOutcome& outcome, qint64 time) override;
    QVector<Message> closing(qint64 time) override;
    bool isKept(const QString&) const override { return false; }

    Received received(const Message& message, qint64 time) override;

private:
    Message death(qint64 time) const;
    /// With the next number in the session's circle.
    Message numbered(const QString& topic, wire::Payload* payload);
    KnownDevice* begunDevice(int number);
    Message data(const KnownDevice& device, wire::Payload* payload);
    void endSession();

    Received nodeCommand(const QByteArray& payload) const;
    Received deviceCommand(const QString& device, const QByteArray& payload);
    WriteRequest writeRequest(std::optional<int> number, const QString& deviceName,
                              const wire::CommandMetric& command);

    const SparkplugIdentity m_identity;
    const Topics m_topics;
    const std::function<int()> m_takeSessionNumber;
    PrimaryHost m_primaryHost;
    DeviceTable m_devices;
    NodeState m_toldState;
    int m_sessionNumber = 0;
    int m_nextNumber = 0; ///< Of the messages of a session.
    bool m_isConnected = false;
    bool m_isOpen = false; ///< The node's birth was told in this session.
};

} // namespace plc::gateway

#endif
