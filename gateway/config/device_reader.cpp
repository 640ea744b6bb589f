#include "gateway/config/device_reader.h"

#include <QtCore/QHash>

#include <cmath>

#include "gateway/config/field_readers.h"
#include "values/nearest_name.h"

namespace plc::gateway {

using project::JsonNode;

namespace {

constexpr int kShortestCycle = 10;                 // ms
constexpr int kLongestCycle = 24 * 60 * 60 * 1000; // ms

QString readLabels(const JsonNode& node)
{
    return readNonEmpty(node, QStringLiteral("a label or a pattern"));
}

std::optional<double> readBound(const JsonNode& object, const char* key)
{
    return object.has(key) ? std::optional(object.member(key).number()) : std::nullopt;
}

DeadbandSettings readDeadband(const JsonNode& node)
{
    node.checkKeys({"labels", "deadband"}, {});
    DeadbandSettings settings;
    settings.labels = readLabels(node.member("labels"));
    settings.deadband = node.member("deadband").number();
    if (!(settings.deadband >= 0) || std::isinf(settings.deadband))
        node.member("deadband").failExpecting(QStringLiteral("a number of at least 0"));
    return settings;
}

WritableSettings readWritable(const JsonNode& node)
{
    WritableSettings settings;
    if (node.value().isText()) {
        settings.labels = readLabels(node);
        return settings;
    }
    if (!node.value().isObject()) {
        node.failExpecting(QStringLiteral("a label or an object with the key \"labels\""));
        return settings;
    }
    node.checkKeys({"labels"}, {"lowest", "highest"});
    settings.labels = readLabels(node.member("labels"));
    settings.lowest = readBound(node, "lowest");
    settings.highest = readBound(node, "highest");
    if (settings.lowest && settings.highest && *settings.lowest > *settings.highest) {
        node.fail(QStringLiteral("found a lowest value of %1, expected at most the highest one, %2")
                      .arg(*settings.lowest)
                      .arg(*settings.highest));
    }
    return settings;
}

/// How the PLC is read: what of it, how often, from where.
void readReading(const JsonNode& node, DeviceSettings* device)
{
    if (node.has("address"))
        device->address =
            readNonEmpty(node.member("address"), QStringLiteral("a host name or an IP address"));
    if (node.has("port"))
        device->port = readPort(node.member("port"));
    if (node.has("cycle"))
        device->cycleTime = readDuration(node.member("cycle"), kShortestCycle, kLongestCycle);
    if (!node.has("labels"))
        return;
    for (const JsonNode label : node.member("labels").elements())
        device->labels.append(readLabels(label));
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
    device.project = readPath(node.member("project"));
    readReading(node, &device);
    if (node.has("deadband")) {
        for (const JsonNode each : node.member("deadband").elements())
            device.deadbands.append(readDeadband(each));
    }
    if (node.has("writable")) {
        for (const JsonNode each : node.member("writable").elements())
            device.writable.append(readWritable(each));
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
