#include "gateway/config/device_reader.h"

#include <QtCore/QHash>

#include "configuration/field_readers.h"
#include "configuration/label_rules.h"
#include "gateway/config/topic_names.h"
#include "values/nearest_name.h"

namespace plc::gateway {

using project::JsonNode;

namespace {

constexpr int kShortestCycle = 10;                 // ms
constexpr int kLongestCycle = 24 * 60 * 60 * 1000; // ms

/// How the PLC is read: what of it, how often, from where.
void readReading(const JsonNode& node, DeviceSettings* device)
{
    if (node.has("address"))
        device->address = configuration::readNonEmpty(
            node.member("address"), QStringLiteral("a host name or an IP address"));
    if (node.has("port"))
        device->port = configuration::readPort(node.member("port"));
    if (node.has("cycle"))
        device->cycleTime =
            configuration::readDuration(node.member("cycle"), kShortestCycle, kLongestCycle);
    if (!node.has("labels"))
        return;
    for (const JsonNode label : node.member("labels").elements())
        device->labels.append(configuration::readLabels(label));
    if (device->labels.isEmpty())
        node.member("labels").fail(QStringLiteral(
            "found no label, expected at least one; without the key it is what the project reads"));
}

DeviceSettings readDevice(const JsonNode& node, bool hasAudit)
{
    node.checkKeys({"name", "project"},
                   {"address", "port", "labels", "cycle", "deadband", "writable"});
    DeviceSettings device;
    if (!node.errors()->isEmpty())
        return device;
    device.name = readTopicName(node.member("name"));
    device.project = configuration::readPath(node.member("project"));
    readReading(node, &device);
    if (node.has("deadband")) {
        for (const JsonNode each : node.member("deadband").elements())
            device.deadbands.append(configuration::readDeadband(each));
    }
    if (node.has("writable")) {
        for (const JsonNode each : node.member("writable").elements())
            device.writable.append(configuration::readWritable(each));
    }
    if (!device.writable.isEmpty() && !hasAudit)
        node.member("writable")
            .fail(QStringLiteral("values can be written only where each write is recorded: name a "
                                 "file as \"audit\""));
    return device;
}

/// Complains about a name that another device has.
void checkName(const JsonNode& device, const QString& name, const QHash<QString, QString>& earlier)
{
    const auto same = earlier.constFind(name.toCaseFolded());
    if (same == earlier.constEnd())
        return;
    if (*same == name) {
        device.member("name").fail(
            QStringLiteral("two devices are called %1").arg(values::quoted(name)));
    } else {
        device.member("name").fail(
            QStringLiteral("device %1 differs from %2 only in upper and lower case, which many "
                           "consumers do not tell apart")
                .arg(values::quoted(name), values::quoted(*same)));
    }
}

} // namespace

QVector<DeviceSettings> readDevices(const JsonNode& list, bool hasAudit)
{
    QVector<DeviceSettings> devices;
    QHash<QString, QString> names;
    for (const JsonNode node : list.elements()) {
        if (!node.errors()->isEmpty())
            return devices;
        const DeviceSettings device = readDevice(node, hasAudit);
        checkName(node, device.name, names);
        names.insert(device.name.toCaseFolded(), device.name);
        devices.append(device);
    }
    if (devices.isEmpty())
        list.fail(QStringLiteral("found no device, expected at least one"));
    if (devices.size() > kMostDevices)
        list.fail(QStringLiteral("found %1 devices, expected at most %2; plc-gateway split divides "
                                 "them between processes")
                      .arg(devices.size())
                      .arg(kMostDevices));
    return devices;
}

} // namespace plc::gateway
