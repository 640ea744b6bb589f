#include "gateway/sparkplug/sparkplug_publisher.h"

#include <algorithm>

#include "gateway/exchange/outcome_json.h"
#include "gateway/sparkplug/metric_writer.h"
#include "gateway/sparkplug/node_metrics.h"

namespace plc::gateway {
namespace {

/// What a message of history holds at most; a sample that is larger goes alone.
constexpr int kMostSamplesOfMessage = 500;
constexpr std::size_t kMostBytesOfMessage = std::size_t(256) * 1024;

/// Messages of a session are numbered in a circle.
constexpr int kMessageNumbers = 256;

wire::Payload payloadAt(qint64 time)
{
    wire::Payload payload;
    payload.set_timestamp(quint64(time));
    return payload;
}

/// The convention wants metrics in the order of their times.
QVector<Sample> inOrderOfTime(QVector<Sample> samples)
{
    std::stable_sort(samples.begin(), samples.end(),
                     [](const Sample& a, const Sample& b) { return a.time < b.time; });
    return samples;
}

void addSample(const KnownDevice& device, const Sample& sample, wire::Payload* payload)
{
    wire::Metric* metric = payload->add_metrics();
    metric->set_alias(device.alias(sample.metric));
    writeSample(device.device.metrics[sample.metric], sample, metric);
}

void addBirth(const KnownDevice& device, const Sample& sample, wire::Payload* payload)
{
    wire::Metric* metric = payload->add_metrics();
    const Metric& known = device.device.metrics[sample.metric];
    metric->set_alias(device.alias(sample.metric));
    describe(known, metric);
    writeSample(known, sample, metric);
}

} // namespace

SparkplugPublisher::SparkplugPublisher(const SparkplugIdentity& identity,
                                       std::function<int()> takeSessionNumber)
    : m_identity(identity),
      m_topics(identity.group, identity.node),
      m_takeSessionNumber(std::move(takeSessionNumber)),
      m_devices(kFirstFreeAlias)
{
}

void SparkplugPublisher::addDevice(int number, const Device& device)
{
    m_devices.add(number, device);
}

void SparkplugPublisher::removeDevice(int number)
{
    m_devices.remove(number);
}

std::optional<Message> SparkplugPublisher::nextWill(qint64 time)
{
    endSession();
    m_sessionNumber = m_takeSessionNumber();
    Message message = death(time);
    message.qos = 1;
    return message;
}

QVector<Subscription> SparkplugPublisher::subscriptions() const
{
    QVector<Subscription> list{{m_topics.ofNode("NCMD"), 1},
                               {m_topics.ofDevice("DCMD", QStringLiteral("+")), 1}};
    if (!m_identity.primaryHost.isEmpty())
        list.append({Topics::ofHost(m_identity.primaryHost), 1, true});
    return list;
}

void SparkplugPublisher::connected()
{
    m_isConnected = true;
}

void SparkplugPublisher::disconnected()
{
    endSession();
}

void SparkplugPublisher::endSession()
{
    m_isConnected = false;
    m_isOpen = false;
    m_primaryHost.forget();
    m_devices.endAll();
}

bool SparkplugPublisher::mayPublish() const
{
    if (m_identity.primaryHost.isEmpty())
        return m_isConnected;
    return m_isConnected && m_primaryHost.isOnline() && !m_primaryHost.hasLeft();
}

bool SparkplugPublisher::isToLeave() const
{
    return m_primaryHost.hasLeft();
}

QVector<Message> SparkplugPublisher::opening(const NodeState& state, qint64 time)
{
    wire::Payload payload = payloadAt(time);
    addSessionNumber(m_sessionNumber, time, &payload);
    addNodeMetrics(state, time, &payload);
    m_toldState = state;
    m_devices.endAll();
    m_isOpen = true;
    m_nextNumber = 0;
    return {numbered(m_topics.ofNode("NBIRTH"), &payload)};
}

QVector<Message> SparkplugPublisher::nodeChanges(const NodeState& state, qint64 time)
{
    wire::Payload payload = payloadAt(time);
    addNodeChanges(m_toldState, state, time, &payload);
    if (!m_isOpen || payload.metrics_size() == 0)
        return {};
    m_toldState = state;
    return {numbered(m_topics.ofNode("NDATA"), &payload)};
}

QVector<Message> SparkplugPublisher::deviceBegins(int number, const QVector<Sample>& samples,
                                                  qint64 time)
{
    KnownDevice* device = m_devices.find(number);
    if (!device || !m_isOpen)
        return {};
    wire::Payload payload = payloadAt(time);
    for (const Sample& sample : inOrderOfTime(samples)) {
        if (device->hasMetric(sample.metric))
            addBirth(*device, sample, &payload);
    }
    // Not later than the last of the others, even if the clock was set back.
    const int told = payload.metrics_size();
    const qint64 last = told == 0 ? time : qint64(payload.metrics(told - 1).timestamp());
    addText(outcomeName(), device->outcomeAlias(), QString(), qMax(time, last), &payload)
        ->set_is_transient(true);
    device->hasBegun = true;
    return {numbered(m_topics.ofDevice("DBIRTH", device->device.name), &payload)};
}

QVector<Message> SparkplugPublisher::changes(int number, const QVector<Sample>& samples,
                                             qint64 time)
{
    const KnownDevice* device = begunDevice(number);
    if (!device)
        return {};
    wire::Payload payload = payloadAt(time);
    for (const Sample& sample : inOrderOfTime(samples)) {
        if (device->hasMetric(sample.metric))
            addSample(*device, sample, &payload);
    }
    if (payload.metrics_size() == 0)
        return {};
    return {data(*device, &payload)};
}

QVector<Message> SparkplugPublisher::history(int number, const QVector<Sample>& samples,
                                             qint64 time)
{
    const KnownDevice* device = begunDevice(number);
    if (!device)
        return {};
    QVector<Message> messages;
    wire::Payload payload = payloadAt(time);
    std::size_t size = 0;
    for (const Sample& sample : samples) {
        if (!device->hasMetric(sample.metric))
            continue;
        addSample(*device, sample, &payload);
        wire::Metric* metric = payload.mutable_metrics(payload.metrics_size() - 1);
        metric->set_is_historical(true);
        size += metric->ByteSizeLong();
        if (payload.metrics_size() < kMostSamplesOfMessage && size < kMostBytesOfMessage)
            continue;
        messages.append(data(*device, &payload));
        payload = payloadAt(time);
        size = 0;
    }
    if (payload.metrics_size() > 0)
        messages.append(data(*device, &payload));
    return messages;
}

QVector<Message> SparkplugPublisher::deviceEnds(int number, qint64 time)
{
    KnownDevice* device = begunDevice(number);
    if (!device)
        return {};
    device->hasBegun = false;
    wire::Payload payload = payloadAt(time);
    return {numbered(m_topics.ofDevice("DDEATH", device->device.name), &payload)};
}

QVector<Message> SparkplugPublisher::outcome(const WriteOutcome& outcome, qint64 time)
{
    if (!m_isOpen)
        return {};
    wire::Payload payload = payloadAt(time);
    const KnownDevice* device = m_devices.find(outcome.device);
    const QString json = outcomeJson(outcome, device ? device->device.name : QString());
    if (!device || !device->hasBegun) {
        addNodeOutcome(json, outcome.time, &payload);
        return {numbered(m_topics.ofNode("NDATA"), &payload)};
    }
    addText(QString(), device->outcomeAlias(), json, outcome.time, &payload)
        ->set_is_transient(true);
    return {data(*device, &payload)};
}

QVector<Message> SparkplugPublisher::closing(qint64 time)
{
    if (!m_isConnected)
        return {};
    m_isOpen = false;
    m_devices.endAll();
    return {death(time)};
}

Message SparkplugPublisher::death(qint64 time) const
{
    wire::Payload payload = payloadAt(time);
    addSessionNumber(m_sessionNumber, time, &payload);
    return Message{m_topics.ofNode("NDEATH"), serialized(payload), 0, false};
}

Message SparkplugPublisher::numbered(const QString& topic, wire::Payload* payload)
{
    payload->set_seq(quint64(m_nextNumber));
    m_nextNumber = (m_nextNumber + 1) % kMessageNumbers;
    return Message{topic, serialized(*payload), 0, false};
}

Message SparkplugPublisher::data(const KnownDevice& device, wire::Payload* payload)
{
    return numbered(m_topics.ofDevice("DDATA", device.device.name), payload);
}

KnownDevice* SparkplugPublisher::begunDevice(int number)
{
    KnownDevice* device = m_devices.find(number);
    return device && device->hasBegun ? device : nullptr;
}

} // namespace plc::gateway
