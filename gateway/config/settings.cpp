#include "gateway/config/settings.h"

#include <QtCore/QFileInfo>

#include "configuration/configuration_file.h"
#include "configuration/field_readers.h"
#include "configuration/listen_address.h"
#include "configuration/service_paths.h"
#include "gateway/config/broker_reader.h"
#include "gateway/config/device_reader.h"
#include "gateway/config/topic_names.h"
#include "gateway/model/change_store.h"
#include "project/json_node.h"

namespace plc::gateway {

using project::JsonNode;

namespace {

constexpr int kShortestKeepAlive = 5;   // s; the MQTT library takes no shorter one
constexpr int kLongestKeepAlive = 3600; // s
constexpr int kHighestRate = 1000000;   // a second

PublicationFormat readFormat(const JsonNode& node)
{
    const QString format = node.text();
    if (format != QLatin1String("sparkplug") && format != QLatin1String("json"))
        node.failExpecting(QStringLiteral("\"sparkplug\" or \"json\""));
    return format == QLatin1String("json") ? PublicationFormat::Plain
                                           : PublicationFormat::Sparkplug;
}

QString readGroup(const JsonNode& node)
{
    QString group = readTopicName(node);
    // States of hosts have topics of their own where the group would stand; topics that begin with
    // a dollar sign are the broker's.
    if (group == QLatin1String("STATE") || group.startsWith(QLatin1Char('$')))
        node.failExpecting(QStringLiteral("a name other than STATE that does not begin with $"));
    return group;
}

void readFormatOptions(const JsonNode& root, GatewaySettings* settings)
{
    if (root.has("format"))
        settings->format = readFormat(root.member("format"));
    const bool isPlain = settings->format == PublicationFormat::Plain;
    if (root.has("retain")) {
        settings->retainsValues = root.member("retain").boolean();
        if (settings->retainsValues && !isPlain)
            root.member("retain").fail(QStringLiteral(
                "Sparkplug retains no values; \"retain\" is for the format \"json\""));
    }
    if (root.has("primaryHost")) {
        settings->primaryHost = readTopicName(root.member("primaryHost"));
        if (isPlain)
            root.member("primaryHost")
                .fail(QStringLiteral("\"primaryHost\" is for the format \"sparkplug\""));
    }
}

void readStore(const JsonNode& node, GatewaySettings* settings)
{
    node.checkKeys({"file"}, {"size", "rate"});
    settings->storeFile = configuration::readPath(node.member("file"));
    if (node.has("size")) {
        settings->storeSize = configuration::readSize(node.member("size"), kSmallestStore);
        if (settings->storeSize > kLargestStore)
            node.member("size").failExpecting(QStringLiteral("at most 10G"));
    }
    if (node.has("rate"))
        settings->historyRate = int(node.member("rate").integer(1, kHighestRate));
}

/// "127.0.0.1:9108" or "[::1]:9108"
void readListen(const JsonNode& node, MetricsSettings* metrics)
{
    const std::optional<configuration::ListenAddress> found =
        configuration::parseListenAddress(node.text());
    if (!found || found->port == 0 || !configuration::isLoopback(found->address)) {
        node.failExpecting(
            QStringLiteral("an address of this machine alone with a port, such as 127.0.0.1:9108"));
        return;
    }
    metrics->address = found->address;
    metrics->port = found->port;
}

void readMetrics(const JsonNode& node, MetricsSettings* metrics)
{
    node.checkKeys({}, {"listen", "socket"});
    if (node.has("listen") == node.has("socket")) {
        node.failExpecting(QStringLiteral("one of the keys \"listen\" and \"socket\""));
        return;
    }
    if (node.has("listen"))
        readListen(node.member("listen"), metrics);
    if (node.has("socket"))
        metrics->socket = configuration::readSocketPath(node.member("socket"));
}

GatewaySettings readSettings(const JsonNode& root)
{
    GatewaySettings settings;
    root.checkKeys(
        {"group", "node", "brokers", "store", "devices"},
        {"$schema", "format", "retain", "primaryHost", "keepAlive", "audit", "metrics", "status"});
    if (!root.errors()->isEmpty())
        return settings;
    settings.group = readGroup(root.member("group"));
    settings.node = readTopicName(root.member("node"));
    readFormatOptions(root, &settings);
    settings.brokers = readBrokers(root.member("brokers"));
    if (root.has("keepAlive"))
        settings.keepAlive =
            int(root.member("keepAlive").integer(kShortestKeepAlive, kLongestKeepAlive));
    readStore(root.member("store"), &settings);
    if (root.has("audit"))
        settings.auditFile = configuration::readPath(root.member("audit"));
    if (root.has("metrics"))
        readMetrics(root.member("metrics"), &settings.metrics);
    if (root.has("status"))
        settings.statusSocket = configuration::readSocketPath(root.member("status"));
    settings.devices = readDevices(root.member("devices"), !settings.auditFile.isEmpty());
    return settings;
}

void resolvePaths(const QString& folder, GatewaySettings* settings)
{
    const auto resolve = [&folder](QString* path) {
        *path = configuration::resolvedPath(*path, folder);
    };
    for (BrokerSettings& broker : settings->brokers) {
        resolve(&broker.passwordFile);
        if (broker.tls) {
            resolve(&broker.tls->authorities);
            resolve(&broker.tls->certificate);
            resolve(&broker.tls->key);
        }
    }
    for (DeviceSettings& device : settings->devices)
        resolve(&device.project);
    for (QString* path : {&settings->storeFile, &settings->auditFile, &settings->metrics.socket,
                          &settings->statusSocket})
        resolve(path);
}

} // namespace

Expected<GatewaySettings> loadSettings(const QString& path)
{
    const Expected<QByteArray> json =
        streams::readInputFile(path, configuration::kConfigurationFile);
    if (!json)
        return json.error();
    Expected<GatewaySettings> settings = parseSettings(*json, path);
    if (settings)
        resolvePaths(QFileInfo(path).absolutePath(), &*settings);
    return settings;
}

Expected<GatewaySettings> parseSettings(const QByteArray& json, const QString& name)
{
    return configuration::parseConfiguration(json, name, &readSettings);
}

} // namespace plc::gateway
