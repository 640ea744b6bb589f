#include "gateway/operation/status_document.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace plc::gateway {
namespace {

// Each structure is described once: the same list of members writes and reads it.

class ObjectWriter {
public:
    void member(const char* key, const QString& value) { put(key, value); }
    void member(const char* key, const bool& value) { put(key, value); }
    void member(const char* key, const int& value) { put(key, value); }
    void member(const char* key, const double& value) { put(key, value); }
    // Numbers in JSON are exact up to 2^53, which no count comes to.
    void member(const char* key, const qint64& value) { put(key, double(value)); }
    void member(const char* key, const quint64& value) { put(key, double(value)); }

    QJsonObject object;

private:
    void put(const char* key, const QJsonValue& value) { object.insert(QLatin1String(key), value); }
};

class ObjectReader {
public:
    explicit ObjectReader(const QJsonObject& object) : m_object(object) {}

    void member(const char* key, QString& value) { value = at(key).toString(); }
    void member(const char* key, bool& value) { value = at(key).toBool(); }
    void member(const char* key, int& value) { value = at(key).toInt(); }
    void member(const char* key, double& value) { value = at(key).toDouble(); }
    void member(const char* key, qint64& value) { value = qint64(number(key)); }
    void member(const char* key, quint64& value) { value = quint64(number(key)); }

private:
    QJsonValue at(const char* key) const { return m_object.value(QLatin1String(key)); }
    double number(const char* key) const
    {
        constexpr double kMost = 9007199254740992.0; // 2^53
        return qBound(0.0, at(key).toDouble(), kMost);
    }

    QJsonObject m_object;
};

template <typename Visitor, typename Device>
void visitDevice(Visitor& visitor, Device& device)
{
    visitor.member("name", device.name);
    visitor.member("address", device.address);
    visitor.member("up", device.isUp);
    visitor.member("since", device.since);
    visitor.member("problem", device.problem);
    visitor.member("good", device.good);
    visitor.member("stale", device.stale);
    visitor.member("bad", device.bad);
    visitor.member("oldestAge", device.oldestAge);
    visitor.member("cycleTime", device.cycleTime);
    visitor.member("requests", device.requests);
    visitor.member("linkLosses", device.linkLosses);
    visitor.member("messages", device.messages);
    visitor.member("changesPublished", device.changesPublished);
    visitor.member("changesStored", device.changesStored);
    visitor.member("writesDone", device.writes.done);
    visitor.member("writesRefused", device.writes.refused);
    visitor.member("writesUnknown", device.writes.unknown);
}

template <typename Visitor, typename Broker>
void visitBroker(Visitor& visitor, Broker& broker)
{
    visitor.member("name", broker.name);
    visitor.member("connected", broker.isConnected);
    visitor.member("publishing", broker.isPublishing);
    visitor.member("since", broker.since);
    visitor.member("problem", broker.problem);
    visitor.member("connections", broker.connections);
    visitor.member("messages", broker.messages);
    visitor.member("bytes", broker.bytes);
    visitor.member("rebirths", broker.rebirths);
    visitor.member("complaints", broker.complaints);
    visitor.member("lostOutcomes", broker.lostOutcomes);
}

template <typename Visitor, typename Store>
void visitStore(Visitor& visitor, Store& store)
{
    visitor.member("waiting", store.waiting);
    visitor.member("stored", store.stored);
    visitor.member("sent", store.sent);
    visitor.member("dropped", store.dropped);
    visitor.member("problem", store.problem);
}

template <typename Visitor, typename Audit>
void visitAudit(Visitor& visitor, Audit& audit)
{
    visitor.member("waiting", audit.waiting);
    visitor.member("unanswered", audit.unanswered);
    visitor.member("problem", audit.problem);
}

template <typename Visitor, typename Gateway>
void visitGateway(Visitor& visitor, Gateway& gateway)
{
    visitor.member("version", gateway.version);
    visitor.member("group", gateway.group);
    visitor.member("node", gateway.node);
    visitor.member("started", gateway.started);
    visitor.member("time", gateway.time);
    visitor.member("processorTime", gateway.process.processorTime);
    visitor.member("residentBytes", gateway.process.residentBytes);
}

} // namespace

QByteArray statusDocument(const GatewayStatistics& statistics)
{
    ObjectWriter gateway, broker, store, audit;
    visitGateway(gateway, statistics);
    visitBroker(broker, statistics.broker);
    visitStore(store, statistics.store);
    visitAudit(audit, statistics.audit);
    QJsonArray devices;
    for (const DeviceStatistics& each : statistics.devices) {
        ObjectWriter device;
        visitDevice(device, each);
        devices.append(device.object);
    }
    gateway.object.insert(QStringLiteral("broker"), broker.object);
    gateway.object.insert(QStringLiteral("store"), store.object);
    gateway.object.insert(QStringLiteral("audit"), audit.object);
    gateway.object.insert(QStringLiteral("devices"), devices);
    return QJsonDocument(gateway.object).toJson(QJsonDocument::Compact) + '\n';
}

Expected<GatewayStatistics> parseStatus(const QByteArray& document)
{
    QJsonParseError problem;
    const QJsonObject object = QJsonDocument::fromJson(document, &problem).object();
    if (object.isEmpty())
        return Error{QStringLiteral("the answer is no status: %1").arg(problem.errorString())};
    GatewayStatistics statistics;
    ObjectReader gateway(object);
    visitGateway(gateway, statistics);
    ObjectReader broker(object.value(QLatin1String("broker")).toObject());
    visitBroker(broker, statistics.broker);
    ObjectReader store(object.value(QLatin1String("store")).toObject());
    visitStore(store, statistics.store);
    ObjectReader audit(object.value(QLatin1String("audit")).toObject());
    visitAudit(audit, statistics.audit);
    const QJsonArray devices = object.value(QLatin1String("devices")).toArray();
    for (const QJsonValue& value : devices) {
        ObjectReader device(value.toObject());
        statistics.devices.append(DeviceStatistics());
        visitDevice(device, statistics.devices.last());
    }
    return statistics;
}

} // namespace plc::gateway
