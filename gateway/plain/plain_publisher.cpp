#include "gateway/plain/plain_publisher.h"

#include "gateway/exchange/outcome_json.h"
#include "gateway/plain/plain_json.h"
#include "values/nearest_name.h"

namespace plc::gateway {
namespace {

constexpr int kQos = 1;

/// Levels of a path below which writes are expected whatever the devices have now: more devices may
/// come while a connection lasts.
constexpr int kUsualLevels = 16;

/// No label is longer.
constexpr int kLongestTopic = 4096;

int levels(const QString& path)
{
    return int(path.count(QLatin1Char('/'))) + 1;
}

} // namespace

PlainPublisher::PlainPublisher(const PlainIdentity& identity)
    : m_topics(identity.group, identity.node), m_retainsValues(identity.retainsValues)
{
}

void PlainPublisher::addDevice(int number, const Device& device)
{
    removeDevice(number);
    KnownDevice known;
    known.device = device;
    known.topic = PlainTopics::escaped(device.name);
    for (const Metric& metric : device.metrics) {
        known.metricsByPath.insert(PlainTopics::escaped(metric.name), int(known.paths.size()));
        known.paths.append(PlainTopics::escaped(metric.name));
    }
    m_numbers.insert(known.topic, number);
    m_devices.emplace(number, known);
}

void PlainPublisher::removeDevice(int number)
{
    const KnownDevice* device = find(number);
    if (!device)
        return;
    // Another device may have taken over the name.
    if (m_numbers.value(device->topic, number) == number)
        m_numbers.remove(device->topic);
    m_devices.erase(number);
}

const PlainPublisher::KnownDevice* PlainPublisher::find(int number) const
{
    const auto found = m_devices.find(number);
    return found == m_devices.end() ? nullptr : &found->second;
}

std::optional<Message> PlainPublisher::nextWill(qint64)
{
    disconnected();
    return nodeState(nodeLostMessage());
}

QVector<Subscription> PlainPublisher::subscriptions() const
{
    int deepest = kUsualLevels;
    for (const auto& entry : m_devices) {
        for (const QString& path : entry.second.paths)
            deepest = qMax(deepest, levels(path));
    }
    QVector<Subscription> list;
    for (const QString& filter : m_topics.writeFilters(deepest))
        list.append({filter, kQos});
    return list;
}

void PlainPublisher::connected()
{
    m_isConnected = true;
}

void PlainPublisher::disconnected()
{
    m_isConnected = false;
    m_isOpen = false;
    endDevices();
}

void PlainPublisher::endDevices()
{
    for (auto& entry : m_devices)
        entry.second.hasBegun = false;
}

QVector<Message> PlainPublisher::opening(const NodeState& state, qint64 time)
{
    endDevices();
    // What the broker keeps may be of a gateway that was lost.
    QVector<Message> messages;
    for (const auto& entry : m_devices)
        messages.append(deviceState(entry.second, false, time));
    m_isOpen = true;
    m_toldState = state;
    messages.append(nodeState(nodeStateMessage(state, time)));
    return messages;
}

QVector<Message> PlainPublisher::nodeChanges(const NodeState& state, qint64 time)
{
    const bool isSame = state.version == m_toldState.version &&
                        state.stored == m_toldState.stored && state.dropped == m_toldState.dropped;
    if (!m_isOpen || isSame)
        return {};
    m_toldState = state;
    return {nodeState(nodeStateMessage(state, time))};
}

QVector<Message> PlainPublisher::deviceBegins(int number, const QVector<Sample>& samples,
                                              qint64 time)
{
    const auto found = m_devices.find(number);
    if (found == m_devices.end() || !m_isOpen)
        return {};
    found->second.hasBegun = true;
    // The state behind the values: those that the broker kept are live only when they are new.
    QVector<Message> messages = valueMessages(number, samples, false);
    messages.append(deviceState(found->second, true, time));
    return messages;
}

QVector<Message> PlainPublisher::changes(int number, const QVector<Sample>& samples, qint64)
{
    return valueMessages(number, samples, false);
}

QVector<Message> PlainPublisher::history(int number, const QVector<Sample>& samples, qint64)
{
    return valueMessages(number, samples, true);
}

QVector<Message> PlainPublisher::valueMessages(int number, const QVector<Sample>& samples,
                                               bool isHistorical) const
{
    const KnownDevice* device = find(number);
    if (!device || !device->hasBegun)
        return {};
    QVector<Message> messages;
    messages.reserve(samples.size());
    for (const Sample& sample : samples) {
        if (sample.metric < 0 || sample.metric >= int(device->paths.size()))
            continue;
        messages.append(
            Message{m_topics.ofValue(device->topic, device->paths[sample.metric]),
                    valueMessage(device->device.metrics[sample.metric], sample, isHistorical), kQos,
                    m_retainsValues && !isHistorical});
    }
    return messages;
}

QVector<Message> PlainPublisher::deviceEnds(int number, qint64 time)
{
    const auto found = m_devices.find(number);
    if (found == m_devices.end() || !found->second.hasBegun)
        return {};
    found->second.hasBegun = false;
    return {deviceState(found->second, false, time)};
}

QVector<Message> PlainPublisher::outcome(const WriteOutcome& outcome, qint64)
{
    if (!m_isOpen)
        return {};
    const KnownDevice* device = find(outcome.device);
    QString topic = m_topics.ofNode("outcome");
    if (device && outcome.metric >= 0 && outcome.metric < int(device->paths.size()))
        topic = m_topics.ofOutcome(device->topic, device->paths[outcome.metric]);
    else if (device)
        topic = m_topics.ofDevice(device->topic, "outcome");
    const QString json = outcomeJson(outcome, device ? device->device.name : QString());
    return {Message{topic, json.toUtf8(), kQos, false}};
}

QVector<Message> PlainPublisher::closing(qint64 time)
{
    if (!m_isConnected)
        return {};
    QVector<Message> messages;
    for (const auto& entry : m_devices) {
        if (entry.second.hasBegun)
            messages.append(deviceState(entry.second, false, time));
    }
    m_isOpen = false;
    endDevices();
    messages.append(nodeState(stateMessage(false, time)));
    return messages;
}

bool PlainPublisher::isKept(const QString& topic) const
{
    if (topic == m_topics.ofNode("state"))
        return true;
    const std::optional<PlainTopics::Target> value = m_topics.value(topic);
    const KnownDevice* device = value ? find(m_numbers.value(value->device, -1)) : nullptr;
    if (!device)
        return false;
    return topic == m_topics.ofDevice(device->topic, "state") ||
           (m_retainsValues && device->metricsByPath.contains(value->path));
}

Message PlainPublisher::deviceState(const KnownDevice& device, bool isOnline, qint64 time) const
{
    return Message{m_topics.ofDevice(device.topic, "state"), stateMessage(isOnline, time), kQos,
                   true};
}

Message PlainPublisher::nodeState(const QByteArray& payload) const
{
    return Message{m_topics.ofNode("state"), payload, kQos, true};
}

Received PlainPublisher::received(const Message& message, qint64)
{
    Received received;
    const bool isLong = int(message.topic.size()) > kLongestTopic;
    const std::optional<PlainTopics::Target> target =
        isLong ? std::nullopt : m_topics.target(message.topic);
    if (!target) {
        received.complaint = QStringLiteral("nothing is expected there");
        return received;
    }
    // A value of our own whose label ends in "set".
    const KnownDevice* device = find(m_numbers.value(target->device, -1));
    if (device && device->metricsByPath.contains(target->path + QStringLiteral("/set")))
        return received;
    if (message.isRetained) {
        received.complaint = QStringLiteral(
            "a retained command is not carried out, since it would "
            "be at every connection");
        return received;
    }
    received.writes.append(writeRequest(*target, message.payload));
    return received;
}

WriteRequest PlainPublisher::writeRequest(const PlainTopics::Target& target,
                                          const QByteArray& payload) const
{
    WriteRequest request;
    const auto number = m_numbers.constFind(target.device);
    if (number == m_numbers.constEnd()) {
        request.name = target.device + QLatin1Char('/') + target.path;
        request.error = QStringLiteral("there is no device %1").arg(values::quoted(target.device));
        return request;
    }
    const KnownDevice& device = *find(*number);
    const int metric = device.metricsByPath.value(target.path, -1);
    if (metric < 0) {
        request.name = target.path;
        request.error =
            QStringLiteral("the device has no value %1").arg(values::quoted(target.path));
    } else {
        request = readWrite(device.device.metrics[metric], payload);
        request.name = device.device.metrics[metric].name;
        request.metric = metric;
    }
    request.device = *number;
    return request;
}

} // namespace plc::gateway
