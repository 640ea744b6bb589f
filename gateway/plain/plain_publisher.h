#ifndef PLC_GATEWAY_PLAIN_PLAIN_PUBLISHER_H
#define PLC_GATEWAY_PLAIN_PLAIN_PUBLISHER_H

#include <QtCore/QHash>

#include <map>

#include "gateway/model/publisher.h"
#include "gateway/plain/plain_topics.h"

namespace plc::gateway {

struct PlainIdentity {
    QString group;
    QString node;
    bool retainsValues = false; ///< The broker keeps the last live value of each metric.
};

/// Values as JSON, each by a topic of its own, for those who only want to look. A value is live
/// only while both BASE/state and BASE/DEVICE/state tell "online":true; the broker keeps these two,
/// and tells the former itself when the gateway is lost.
class PlainPublisher : public Publisher {
public:
    explicit PlainPublisher(const PlainIdentity& identity);

    void addDevice(int number, const Device& device) override;
    void removeDevice(int number) override;

    std::optional<Message> nextWill(qint64 time) override;
    QVector<Subscription> subscriptions() const override;
    void connected() override;
    void disconnected() override;
    bool mayPublish() const override { return m_isConnected; }
    bool isToLeave() const override { return false; }

    QVector<Message> opening(const NodeState& state, qint64 time) override;
    QVector<Message> nodeChanges(const NodeState& state, qint64 time) override;
    QVector<Message> deviceBegins(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> changes(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> history(int number, const QVector<Sample>& samples, qint64 time) override;
    QVector<Message> deviceEnds(int number, qint64 time) override;
    QVector<Message> outcome(const WriteOutcome& outcome, qint64 time) override;
    QVector<Message> closing(qint64 time) override;
    bool isKept(const QString& topic) const override;

    Received received(const Message& message, qint64 time) override;

private:
    struct KnownDevice {
        Device device;
        QString topic;          ///< Its name as it stands in topics.
        QVector<QString> paths; ///< Of the metrics.
        QHash<QString, int> metricsByPath;
        bool hasBegun = false;
    };

    const KnownDevice* find(int number) const;
    QVector<Message> valueMessages(int number, const QVector<Sample>& samples,
                                   bool isHistorical) const;
    Message deviceState(const KnownDevice& device, bool isOnline, qint64 time) const;
    Message nodeState(const QByteArray& payload) const;
    WriteRequest writeRequest(const PlainTopics::Target& target, const QByteArray& payload) const;
    void endDevices();

    const PlainTopics m_topics;
    const bool m_retainsValues;
    std::map<int, KnownDevice> m_devices;
    QHash<QString, int> m_numbers; ///< By the names as they stand in topics.
    NodeState m_toldState;
    bool m_isConnected = false;
    bool m_isOpen = false;
};

} // namespace plc::gateway

#endif
