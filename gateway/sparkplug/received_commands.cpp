// What SparkplugPublisher makes of messages from the broker.

#include "gateway/sparkplug/command.h"
#include "gateway/sparkplug/node_metrics.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "gateway/sparkplug/utf8.h"
#include "values/nearest_name.h"

namespace plc::gateway {
namespace {

/// A name or an id that is longer is of nobody here.
constexpr std::size_t kLongestName = 4096;
constexpr std::size_t kLongestId = 100;

/// Nothing if the bytes are no such text.
std::optional<QString> shortText(const std::string& bytes, std::size_t longest)
{
    if (bytes.size() > longest)
        return std::nullopt;
    return fromUtf8(bytes.data(), bytes.size());
}

Received complaint(const QString& text)
{
    Received received;
    received.complaint = text;
    return received;
}

struct Name {
    QString text; ///< As requests and errors show it.
    QString error;
};

/// By which a command means its metric: a name, or the alias in the place of it.
Name nameOf(const wire::CommandMetric& command)
{
    if (!command.has_name()) {
        if (command.has_alias())
            return {QStringLiteral("alias %1").arg(command.alias()), QString()};
        return {QString(), QStringLiteral("it has neither a name nor an alias")};
    }
    const std::optional<QString> name = shortText(command.name(), kLongestName);
    if (!name)
        return {QString(), QStringLiteral("its name is too long or no UTF-8")};
    return {*name, QString()};
}

/// The place of the metric that a command means.
Expected<int> metricOf(const KnownDevice& device, const QString& name,
                       const wire::CommandMetric& command)
{
    std::optional<int> metric;
    if (!command.has_name())
        metric = device.metricOf(command.alias());
    else if (device.metricsByName.contains(name))
        metric = device.metricsByName.value(name);
    if (!metric) {
        return Error{QStringLiteral("the device has no metric %1 that can be written")
                         .arg(values::quoted(name))};
    }
    if (command.has_name() && command.has_alias() && command.alias() != device.alias(*metric))
        return Error{QStringLiteral("name and alias are those of different metrics")};
    return *metric;
}

} // namespace

Received SparkplugPublisher::received(const Message& message, qint64)
{
    if (!m_identity.primaryHost.isEmpty() &&
        Topics::isOfHost(message.topic, m_identity.primaryHost))
        return complaint(m_primaryHost.received(message.payload));
    const std::optional<QString> device = m_topics.commandedDevice(message.topic);
    if (!device && message.topic != m_topics.ofNode("NCMD"))
        return complaint(QStringLiteral("nothing is expected there"));
    if (message.isRetained) {
        return complaint(
            QStringLiteral("a retained command is not carried out, since it would be "
                           "at every connection"));
    }
    return device ? deviceCommand(*device, message.payload) : nodeCommand(message.payload);
}

Received SparkplugPublisher::nodeCommand(const QByteArray& payload) const
{
    const Expected<wire::Command> command = parseCommand(payload);
    if (!command)
        return complaint(command.error().text);
    Received received;
    for (const wire::CommandMetric& metric : command->metrics()) {
        const Name name = nameOf(metric);
        if (!name.error.isEmpty())
            received.complaint = name.error;
        else if (name.text != QLatin1String(rebirthName()))
            received.complaint =
                QStringLiteral("%1 cannot be written").arg(values::quoted(name.text));
        else if (!metric.has_boolean_value())
            received.complaint = QStringLiteral("a rebirth is asked for by true");
        else
            received.isRebirthWanted = received.isRebirthWanted || metric.boolean_value();
    }
    return received;
}

Received SparkplugPublisher::deviceCommand(const QString& device, const QByteArray& payload)
{
    const Expected<wire::Command> command = parseCommand(payload);
    if (!command)
        return complaint(command.error().text);
    const std::optional<QString> id = shortText(command->uuid(), kLongestId);
    if (!id)
        return complaint(QStringLiteral("its uuid is too long or no UTF-8"));
    const std::optional<int> number = m_devices.numberOf(device);
    Received received;
    received.writes.reserve(command->metrics_size());
    for (const wire::CommandMetric& metric : command->metrics()) {
        WriteRequest request = writeRequest(number, device, metric);
        request.id = *id;
        received.writes.append(request);
    }
    return received;
}

WriteRequest SparkplugPublisher::writeRequest(std::optional<int> number, const QString& deviceName,
                                              const wire::CommandMetric& command)
{
    WriteRequest request;
    const Name name = nameOf(command);
    request.name = name.text;
    request.error = name.error;
    if (!number)
        request.error = QStringLiteral("there is no device %1").arg(values::quoted(deviceName));
    request.device = number.value_or(-1);
    if (!request.error.isEmpty())
        return request;
    const KnownDevice& device = *m_devices.find(*number);
    const Expected<int> metric = metricOf(device, name.text, command);
    if (!metric) {
        request.error = metric.error().text;
        return request;
    }
    request.metric = *metric;
    request.name = device.device.metrics[*metric].name;
    const Expected<QVector<values::Value>> values =
        commandedValues(device.device.metrics[*metric], command);
    if (values)
        request.values = *values;
    else
        request.error = values.error().text;
    return request;
}

} // namespace plc::gateway
