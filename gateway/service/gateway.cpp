#include "gateway/service/gateway.h"

#include <QtCore/QDateTime>
#include <QtCore/QSet>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "gateway/broker/client_id.h"
#include "gateway/config/same_settings.h"

namespace plc::gateway {
namespace {

constexpr int kTickTime = 250; // ms
constexpr int kTicksPerSecond = 1000 / kTickTime;
constexpr int kLongestToldTopic = 256;
constexpr int kLastWords = 2000;    // ms in which the end waits for the broker
constexpr int kProvenAfter = 5000;  // ms of a connection
constexpr int kHostPatience = 2000; // ms for a broker to tell what it keeps of the primary host

qint64 wallTime()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace

Gateway::Gateway(const GatewaySettings& settings, GatewayParts parts)
    : m_settings(settings),
      m_parts(std::move(parts)),
      m_broker(clientId(settings.group, settings.node), settings.keepAlive, this),
      m_writes(
          AuditTrail(m_parts.audit, m_parts.auditProblem),
          [this](const WriteOutcome& outcome) { m_forwarder->tell(outcome, now(), outcome.time); },
          wallTime)
{
    m_clock.start();
    m_forwarder =
        std::make_unique<Forwarder>(m_parts.publisher.get(), &m_broker, m_parts.store.get(),
                                    settings.historyRate, m_parts.version, m_parts.topics.get());
    m_choice = std::make_unique<BrokerChoice>(int(settings.brokers.size()), std::random_device{}());
    m_retry.setSingleShot(true);
    QObject::connect(&m_retry, &QTimer::timeout, this, [this] { openBroker(); });
    QObject::connect(&m_ticking, &QTimer::timeout, this, [this] { tick(); });
}

Gateway::~Gateway() = default;

Expected<void> Gateway::prepare()
{
    Expected<NewDevices> made = create(m_settings.devices);
    if (!made)
        return made.error();
    for (std::unique_ptr<PlcDevice>& device : *made)
        addDevice(std::move(device));
    return {};
}

/// All of them, or none.
Expected<Gateway::NewDevices> Gateway::create(const QVector<DeviceSettings>& wanted)
{
    NewDevices made;
    for (const DeviceSettings& settings : wanted) {
        Expected<std::unique_ptr<PlcDevice>> device =
            PlcDevice::create(++m_lastNumber, settings, m_parts.driver, this);
        if (!device)
            return device.error();
        made.push_back(std::move(*device));
    }
    return made;
}

void Gateway::addDevice(std::unique_ptr<PlcDevice> device)
{
    const int number = device->number();
    for (const QString& warning : device->warnings())
        log(warning);
    m_forwarder->addDevice(number, device->description(), device->told());
    m_devices[number] = std::move(device);
}

void Gateway::removeDevice(int number)
{
    const auto found = m_devices.find(number);
    found->second->stop();
    m_forwarder->removeDevice(number, now(), wallTime());
    m_devices.erase(found);
}

void Gateway::start()
{
    for (const auto& [number, device] : m_devices)
        device->start();
    openBroker();
    m_ticking.start(kTickTime);
}

void Gateway::stop(std::function<void()> ended)
{
    m_ended = std::move(ended);
    m_endWantedAt = now();
    m_retry.stop();
    for (const auto& [number, device] : m_devices) {
        takeFrom(device.get());
        device->stop();
    }
    m_forwarder->tick(now(), wallTime());
    endWhenConfirmed();
}

/// What the broker does not confirm in time stays in the store.
void Gateway::endWhenConfirmed()
{
    if (!m_ended)
        return;
    const bool isLate = now() - m_endWantedAt > kLastWords;
    if (m_isConnected && m_forwarder->hasUnconfirmed() && !isLate)
        return;
    m_ticking.stop();
    if (m_isConnected) {
        leaveBroker();
        m_broker.waitForEnd(kLastWords);
    }
    m_forwarder->flush(now());
    recordLastWrites();
    std::exchange(m_ended, nullptr)();
}

void Gateway::recordLastWrites()
{
    m_writes.secondPassed();
    if (const quint64 missing = m_writes.audit().waiting(); missing > 0)
        log(QStringLiteral("%1 outcomes of writes are not in the audit file: %2")
                .arg(missing)
                .arg(m_writes.audit().error()));
}

void Gateway::openBroker()
{
    const int index = m_choice->current();
    m_broker.open(m_settings.brokers[index], m_parts.publisher->nextWill(wallTime()),
                  m_parts.publisher->subscriptions());
}

QString Gateway::brokerName() const
{
    const BrokerSettings& broker = m_settings.brokers[m_choice->current()];
    return QStringLiteral("%1:%2").arg(broker.host).arg(broker.port);
}

void Gateway::brokerConnected()
{
    m_isConnected = true;
    m_brokerSince = wallTime();
    m_brokerReason.clear();
    ++m_counters.brokerConnections;
    m_connectedAt = now();
    if (!m_isHostMissing) {
        m_toldReasons.clear();
        log(QStringLiteral("connected to the broker %1").arg(brokerName()));
    }
    m_forwarder->connected(now(), wallTime(), brokerName());
    judgeBroker();
}

/// A broker that takes values, or that has not lost us for some seconds, is as good as any. Not so
/// one that takes a connection only for us to find that the primary host is elsewhere.
void Gateway::judgeBroker()
{
    if (!m_isConnected)
        return;
    const qint64 lasted = now() - m_connectedAt;
    if (isPublishing() || lasted > kProvenAfter)
        m_choice->succeeded();
    if (isPublishing())
        m_isWaitTold = false;
    else if (lasted > kHostPatience && !m_isHostMissing && !std::exchange(m_isWaitTold, true))
        log(QStringLiteral("waits for the primary host %1, of which the broker %2 tells nothing; "
                           "changes are stored")
                .arg(m_settings.primaryHost, brokerName()));
}

void Gateway::brokerLost(const QString& reason)
{
    const bool wasConnected = std::exchange(m_isConnected, false);
    if (wasConnected) {
        m_brokerSince = wallTime();
        m_forwarder->lost(now());
    }
    m_brokerReason = reason;
    const bool wasLeft = std::exchange(m_isLeaving, false);
    // A broker that stays away is told once, not at each attempt.
    QString& told = m_toldReasons[brokerName()];
    if (wasConnected)
        log(QStringLiteral("lost the broker %1: %2; changes are stored").arg(brokerName(), reason));
    else if (!wasLeft && told != reason)
        log(QStringLiteral("no connection to the broker %1: %2").arg(brokerName(), reason));
    told = reason;
    const int pause = std::exchange(m_hasOtherBrokers, false) ? 0 : m_choice->failed();
    if (!m_ended)
        m_retry.start(pause);
    endWhenConfirmed();
}

void Gateway::messageArrived(const Message& message)
{
    const Received received = m_parts.publisher->received(message, wallTime());
    if (!received.complaint.isEmpty()) {
        if (m_counters.complaints++ % 1000 == 0)
            log(QStringLiteral("%1: %2").arg(message.topic.left(kLongestToldTopic),
                                             received.complaint));
    }
    if (received.isRebirthWanted) {
        ++m_counters.rebirths;
        m_forwarder->wantRebirth(now(), wallTime());
    }
    for (WriteRequest request : received.writes) {
        request.topic = message.topic;
        const auto found = m_devices.find(request.device);
        m_writes.take(request, found == m_devices.end() ? nullptr : found->second.get());
    }
    m_forwarder->beginIfWanted(now(), wallTime());
    if ((m_isHostMissing || m_isWaitTold) && m_parts.publisher->mayPublish()) {
        m_isHostMissing = false;
        m_toldReasons.clear();
        log(QStringLiteral("the primary host is at the broker %1").arg(brokerName()));
    }
    leaveIfWanted();
    judgeBroker();
}

/// The primary host is elsewhere: the next broker may be where it is.
void Gateway::leaveIfWanted()
{
    if (!m_isConnected || !m_parts.publisher->isToLeave())
        return;
    // It is looked for at each broker again and again, and told once.
    if (!std::exchange(m_isHostMissing, true))
        log(QStringLiteral("the primary host left the broker %1; changes are stored")
                .arg(brokerName()));
    leaveBroker();
}

/// Says goodbye. From then on changes are stored, although the connection lasts for a moment.
void Gateway::leaveBroker()
{
    for (const Message& message : m_parts.publisher->closing(wallTime()))
        m_broker.publish(message);
    m_broker.close();
    m_isConnected = false;
    m_isLeaving = true;
    m_brokerSince = wallTime();
    m_forwarder->lost(now());
}

void Gateway::messagesDropped(quint64 count)
{
    m_counters.droppedCommands += count;
}

void Gateway::confirmed(quint64 mark)
{
    m_forwarder->confirmed(mark);
    endWhenConfirmed();
}

void Gateway::passEnded(int device)
{
    takeFrom(m_devices.at(device).get());
}

void Gateway::takeFrom(PlcDevice* device)
{
    const qint64 time = wallTime();
    const QVector<Sample> samples = device->takeSamples(time);
    m_forwarder->update(device->number(), device->isAlive(), samples, now(), time);
    for (const Sample& sample : samples) {
        if (sample.quality == Quality::Good)
            m_latency.add(inSeconds(time - sample.time));
    }
}

void Gateway::linkChanged(int device, bool isUp, const QString& reason)
{
    const auto found = m_devices.find(device);
    if (found == m_devices.end() || m_ended)
        return;
    const QString name = found->second->description().name;
    log(isUp ? QStringLiteral("%1: connected to %2").arg(name, found->second->peer())
             : QStringLiteral("%1: no link to %2: %3").arg(name, found->second->peer(), reason));
}

void Gateway::tick()
{
    m_ticks = (m_ticks + 1) % kTicksPerSecond;
    const bool isSecond = m_ticks == 0;
    if (isSecond) {
        m_writes.secondPassed();
        tellDropped();
        tellFlooded();
        tellLostOutcomes();
        // Values become stale without anything happening.
        for (const auto& [number, device] : m_devices)
            takeFrom(device.get());
    }
    m_forwarder->tick(now(), wallTime());
    tellStore();
    tellAudit();
    judgeBroker();
    endWhenConfirmed();
}

void Gateway::tellStore()
{
    if (m_forwarder->storeError() == m_toldStoreError)
        return;
    m_toldStoreError = m_forwarder->storeError();
    log(m_toldStoreError.isEmpty()
            ? QStringLiteral("the store takes changes again")
            : QStringLiteral("changes cannot be stored: %1").arg(m_toldStoreError));
}

void Gateway::tellAudit()
{
    const QString error = m_writes.audit().error();
    if (error == m_toldAuditError)
        return;
    m_toldAuditError = error;
    log(error.isEmpty()
            ? QStringLiteral("writes are recorded again, and carried out")
            : QStringLiteral("writes cannot be recorded and are refused: %1").arg(error));
}

/// Once a second at most: a flood would fill the log as well.
void Gateway::tellDropped()
{
    const quint64 count = m_counters.droppedCommands - m_toldDropped;
    m_toldDropped = m_counters.droppedCommands;
    if (count > 0)
        log(QStringLiteral("%1 messages came faster than they could be read, and are gone")
                .arg(count));
}

/// Once a second at most, too.
void Gateway::tellFlooded()
{
    const quint64 count = m_writes.flooded() - m_toldFlooded;
    m_toldFlooded = m_writes.flooded();
    if (count > 0)
        log(QStringLiteral("%1 requests to write what is not writable were refused without an "
                           "outcome")
                .arg(count));
}

void Gateway::tellLostOutcomes()
{
    const quint64 count = m_forwarder->counters().lostOutcomes - m_toldLostOutcomes;
    m_toldLostOutcomes += count;
    if (count > 0)
        log(QStringLiteral("%1 outcomes of writes were too many to be kept for a broker; "
                           "consumers will not see them")
                .arg(count));
}

Expected<void> Gateway::reconfigure(const GatewaySettings& settings)
{
    if (!isSameService(settings, m_settings)) {
        return Error{
            QStringLiteral("only devices and brokers can change while the gateway runs; "
                           "restart it for everything else")};
    }
    QVector<DeviceSettings> other;
    QSet<int> gone;
    for (const auto& [number, device] : m_devices)
        gone.insert(number);
    for (const DeviceSettings& wanted : settings.devices) {
        const auto same = std::find_if(m_devices.begin(), m_devices.end(), [&](const auto& entry) {
            return entry.second->isAs(wanted);
        });
        if (same == m_devices.end())
            other.append(wanted);
        else
            gone.remove(same->first);
    }
    Expected<NewDevices> made = create(other);
    if (!made)
        return made.error();
    for (int number : std::as_const(gone))
        removeDevice(number);
    for (std::unique_ptr<PlcDevice>& device : *made) {
        PlcDevice* const added = device.get();
        addDevice(std::move(device));
        added->start();
    }
    m_forwarder->removeStrangers(now());
    const bool hasOtherBrokers = !isSame(settings.brokers, m_settings.brokers);
    m_settings = settings;
    if (hasOtherBrokers)
        beginWithBrokers();
    return {};
}

/// With the first of those that the configuration has now, whatever was connected or tried.
void Gateway::beginWithBrokers()
{
    m_choice =
        std::make_unique<BrokerChoice>(int(m_settings.brokers.size()), std::random_device{}());
    if (m_retry.isActive()) {
        m_retry.start(0);
        return;
    }
    m_hasOtherBrokers = true;
    if (m_isConnected) {
        leaveBroker();
    } else {
        m_isLeaving = true;
        m_broker.drop(QStringLiteral("the configuration has other brokers now"));
    }
}

} // namespace plc::gateway
