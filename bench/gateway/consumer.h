#ifndef PLC_BENCH_GATEWAY_CONSUMER_H
#define PLC_BENCH_GATEWAY_CONSUMER_H

#include <QtCore/QHash>

#include <map>
#include <vector>

#include "gateway/broker/mosquitto_broker.h"

namespace plc::bench {

/// A consumer of clocks: values that are milliseconds since midnight and go up by kStep. So each
/// tells how old it is, and whether one before it is missing.
class Consumer : private gateway::BrokerListener {
public:
    static constexpr qint64 kStep = 1000; // ms

    explicit Consumer(quint16 port);

    /// Forgets what was counted.
    void begin();

    bool isConnected() const { return m_isConnected; }
    int devices() const { return int(m_devices.size()); }
    quint64 messages() const { return m_messages; }
    quint64 values() const { return m_values; }
    quint64 historical() const { return m_historical; }
    quint64 missing() const { return m_missing; }
    quint64 repeated() const { return m_repeated; }
    quint64 sequenceHoles() const { return m_sequenceHoles; }
    quint64 losses() const { return m_losses; }
    /// The age in milliseconds that this share of the values had at most when they came.
    int agePercentile(double share) const;

private:
    struct Device {
        QHash<quint64, qint64> lastByAlias;
    };

    void brokerConnected() override { m_isConnected = true; }
    void brokerLost(const QString& reason) override;
    void messageArrived(const gateway::Message& message) override;
    void messagesDropped(quint64 count) override { m_missing += count; }
    void confirmed(quint64 mark) override { Q_UNUSED(mark) }
    void takeValue(Device* device, quint64 alias, qint64 value, qint64 timeOfDay);
    void takeSequence(const QString& node, bool isBirth, quint64 number);

    gateway::MosquittoBroker m_broker;
    bool m_isConnected = false;
    std::map<QString, Device> m_devices;
    QHash<QString, quint64> m_lastSequences;
    std::vector<quint64> m_ages; ///< How many were so many milliseconds old.
    quint64 m_messages = 0;
    quint64 m_values = 0;
    quint64 m_historical = 0;
    quint64 m_missing = 0;
    quint64 m_repeated = 0;
    quint64 m_sequenceHoles = 0;
    quint64 m_losses = 0;
};

} // namespace plc::bench

#endif
