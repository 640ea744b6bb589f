#include "gateway/config/broker_reader.h"

#include "configuration/field_readers.h"

namespace plc::gateway {

using project::JsonNode;

namespace {

constexpr quint16 kTlsPort = 8883;
constexpr int kMostBrokers = 16;

const char kProtocol3[] = "3.1.1";
const char kProtocol5[] = "5";

bool readIsVersion5(const JsonNode& node)
{
    const QString protocol = node.text();
    if (protocol != QLatin1String(kProtocol3) && protocol != QLatin1String(kProtocol5))
        node.failExpecting(QStringLiteral("\"3.1.1\" or \"5\""));
    return protocol == QLatin1String(kProtocol5);
}

TlsSettings readTls(const JsonNode& node)
{
    node.checkKeys({}, {"authorities", "certificate", "key"});
    TlsSettings tls;
    if (node.has("authorities"))
        tls.authorities = configuration::readPath(node.member("authorities"));
    if (node.has("certificate"))
        tls.certificate = configuration::readPath(node.member("certificate"));
    if (node.has("key"))
        tls.key = configuration::readPath(node.member("key"));
    if (node.has("certificate") != node.has("key"))
        node.fail(QStringLiteral("a certificate and its key are given together or not at all"));
    return tls;
}

BrokerSettings readBroker(const JsonNode& node)
{
    node.checkKeys({"host"}, {"port", "protocol", "user", "passwordFile", "tls"});
    BrokerSettings broker;
    if (!node.errors()->isEmpty())
        return broker;
    broker.host = configuration::readNonEmpty(node.member("host"),
                                              QStringLiteral("a host name or an IP address"));
    if (node.has("tls")) {
        broker.tls = readTls(node.member("tls"));
        broker.port = kTlsPort;
    }
    if (node.has("port"))
        broker.port = configuration::readPort(node.member("port"));
    if (node.has("protocol"))
        broker.isVersion5 = readIsVersion5(node.member("protocol"));
    if (node.has("user"))
        broker.user =
            configuration::readNonEmpty(node.member("user"), QStringLiteral("the name of a user"));
    if (node.has("passwordFile")) {
        broker.passwordFile = configuration::readPath(node.member("passwordFile"));
        if (broker.user.isEmpty())
            node.member("passwordFile")
                .fail(QStringLiteral("a password needs a user, which the key \"user\" names"));
    }
    return broker;
}

} // namespace

QVector<BrokerSettings> readBrokers(const JsonNode& list)
{
    QVector<BrokerSettings> brokers;
    for (const JsonNode node : list.elements()) {
        if (!node.errors()->isEmpty())
            return brokers;
        brokers.append(readBroker(node));
    }
    if (brokers.isEmpty())
        list.fail(QStringLiteral("found no broker, expected at least one"));
    if (brokers.size() > kMostBrokers)
        list.fail(QStringLiteral("found %1 brokers, expected at most %2")
                      .arg(brokers.size())
                      .arg(kMostBrokers));
    return brokers;
}

} // namespace plc::gateway
