#ifndef PLC_GATEWAY_SERVICE_GATEWAY_H
#define PLC_GATEWAY_SERVICE_GATEWAY_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <map>
#include <memory>
#include <vector>

#include "gateway/broker/mosquitto_broker.h"
#include "gateway/config/settings.h"
#include "gateway/devices/plc_device.h"
#include "gateway/forwarding/forwarder.h"
#include "gateway/model/change_store.h"
#include "gateway/model/publisher.h"
#include "gateway/model/topic_record.h"
#include "gateway/operation/statistics.h"
#include "gateway/service/broker_choice.h"
#include "gateway/service/write_desk.h"

namespace plc::gateway {

/// What a gateway stands on, beside its PLCs and its brokers.
struct GatewayParts {
    QString driver; ///< Path of the driver library.
    QString version;
    std::unique_ptr<Publisher> publisher;
    std::unique_ptr<ChangeStore> store;
    std::unique_ptr<TopicRecord> topics; ///< What brokers keep.
    AuditTrail::Append audit;
    AuditTrail::Problem auditProblem;
    std::function<void(const QString&)> log; ///< One line for those who operate it.
};

/// What the gateway did since the start.
struct GatewayCounters {
    quint64 brokerConnections = 0;
    quint64 rebirths = 0;
    quint64 droppedCommands = 0;
    quint64 complaints = 0;
};

/// The gateway: PLCs on one side, a broker on the other. All of it is in one thread, but for the
/// broker's connection.
class Gateway : public QObject, private BrokerListener, private PlcDeviceListener {
public:
    Gateway(const GatewaySettings& settings, GatewayParts parts);
    ~Gateway() override;

    /// Reads all projects. Nothing is connected yet.
    Expected<void> prepare();
    void start();
    /// Says goodbye; `ended` is called when the broker has everything, or does not take it in time.
    void stop(std::function<void()> ended);
    /// Takes over a new configuration: devices that it changes end and begin again, all others go
    /// on. Where something else than devices and brokers differs, or a device cannot be made,
    /// everything stays as it is.
    Expected<void> reconfigure(const GatewaySettings& settings);

    using Devices = std::map<int, std::unique_ptr<PlcDevice>>;
    const Devices& devices() const { return m_devices; }
    const GatewaySettings& settings() const { return m_settings; }
    const Forwarder& forwarder() const { return *m_forwarder; }
    const ChangeStore& store() const { return *m_parts.store; }
    const WriteDesk& writes() const { return m_writes; }
    const GatewayCounters& counters() const { return m_counters; }
    bool isBrokerConnected() const { return m_isConnected; }
    /// Whether values go out: a broker is connected, and the primary host there, if one is wanted.
    bool isPublishing() const { return m_isConnected && m_forwarder->isLive(); }
    /// Of the broker that is connected, or tried next.
    QString brokerName() const;
    const QString& brokerReason() const { return m_brokerReason; }
    /// Since when the broker is connected, or is not; 0: it never was.
    qint64 brokerSince() const { return m_brokerSince; }
    /// From the request of a value until its change was handed over, in this pass.
    const Histogram& latency() const { return m_latency; }
    /// Milliseconds of the gateway's clock.
    qint64 now() const { return m_clock.elapsed(); }

private:
    using NewDevices = std::vector<std::unique_ptr<PlcDevice>>;

    void brokerConnected() override;
    void brokerLost(const QString& reason) override;
    void messageArrived(const Message& message) override;
    void messagesDropped(quint64 count) override;
    void confirmed(quint64 mark) override;
    void passEnded(int device) override;
    void linkChanged(int device, bool isUp, const QString& reason) override;

    Expected<NewDevices> create(const QVector<DeviceSettings>& wanted);
    void openBroker();
    void tick();
    void takeFrom(PlcDevice* device);
    void addDevice(std::unique_ptr<PlcDevice> device);
    void removeDevice(int number);
    void leaveIfWanted();
    void leaveBroker();
    void beginWithBrokers();
    void judgeBroker();
    void tellDropped();
    void tellFlooded();
    void tellAudit();
    void tellStore();
    void tellLostOutcomes();
    void endWhenConfirmed();
    void recordLastWrites();
    void log(const QString& line) const { m_parts.log(line); }

    GatewaySettings m_settings;
    GatewayParts m_parts;
    QElapsedTimer m_clock;
    MosquittoBroker m_broker;
    std::unique_ptr<Forwarder> m_forwarder;
    WriteDesk m_writes;
    Devices m_devices;
    int m_lastNumber = 0;
    std::unique_ptr<BrokerChoice> m_choice;
    QTimer m_retry;
    QTimer m_ticking;
    int m_ticks = 0;
    bool m_isConnected = false;
    bool m_hasOtherBrokers = false; ///< The next one to be tried is the first of a new list.
    quint64 m_toldDropped = 0;
    quint64 m_toldLostOutcomes = 0;
    qint64 m_connectedAt = 0;
    bool m_isLeaving = false; ///< The connection was closed from here, and is not gone yet.
    qint64 m_brokerSince = 0;
    Histogram m_latency;
    QString m_brokerReason;
    QHash<QString, QString> m_toldReasons; ///< Of each broker why it was not there, as logged.
    bool m_isHostMissing = false;          ///< The primary host has left, and that was logged.
    bool m_isWaitTold = false;             ///< Nothing is known of the primary host, as logged.
    QString m_toldStoreError;
    QString m_toldAuditError;
    quint64 m_toldFlooded = 0;
    GatewayCounters m_counters;
    std::function<void()> m_ended;
    qint64 m_endWantedAt = -1;
};

} // namespace plc::gateway

#endif
