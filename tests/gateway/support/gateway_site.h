#ifndef PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_SITE_H
#define PLC_TESTS_GATEWAY_SUPPORT_GATEWAY_SITE_H

#include <QtCore/QJsonArray>
#include <QtCore/QTemporaryDir>

#include <map>

#include "gateway/support/gateway_process.h"

namespace plc::test {

/// The node "hall" of the group "works": PLCs, a configuration, and the gateway that it is for, in
/// a folder of their own.
class GatewaySite {
public:
    GatewaySite()
    {
        m_configuration =
            QJsonObject{{QStringLiteral("group"), QStringLiteral("works")},
                        {QStringLiteral("node"), QStringLiteral("hall")},
                        {QStringLiteral("keepAlive"), 5},
                        {QStringLiteral("store"),
                         QJsonObject{{QStringLiteral("file"), QStringLiteral("store")}}},
                        {QStringLiteral("audit"), QStringLiteral("audit")},
                        {QStringLiteral("status"), QStringLiteral("status")},
                        {QStringLiteral("metrics"),
                         QJsonObject{{QStringLiteral("socket"), QStringLiteral("metrics")}}}};
    }

    /// A PLC with this project, in which ' stands for ", and what is said of it in the
    /// configuration.
    PlcProcess& addPlc(const char* name, QByteArray project, QJsonObject device = {})
    {
        const QString text = QString::fromUtf8(name);
        const QString file = path(QStringLiteral("project%1.json").arg(m_plcs.size()));
        writeFile(file, project.replace('\'', '"'));
        auto& plc = m_plcs[text] = std::make_unique<PlcProcess>(file);
        device[QStringLiteral("name")] = text;
        device[QStringLiteral("project")] = file;
        device[QStringLiteral("port")] = plc->port();
        if (!device.contains(QStringLiteral("cycle")))
            device[QStringLiteral("cycle")] = 50;
        m_devices[text] = device;
        return *plc;
    }
    PlcProcess& plc(const char* name) { return *m_plcs.at(QString::fromUtf8(name)); }
    /// Of the configuration; the PLC runs on.
    void removeDevice(const char* name) { m_devices.erase(QString::fromUtf8(name)); }

    void set(const char* key, const QJsonValue& value)
    {
        m_configuration[QLatin1String(key)] = value;
    }
    void addBroker(const QJsonObject& broker) { m_brokers.append(broker); }
    void forgetBrokers() { m_brokers = QJsonArray(); }

    void writeConfiguration()
    {
        QJsonArray devices;
        for (const auto& [name, device] : m_devices)
            devices.append(device);
        QJsonObject document = m_configuration;
        document[QStringLiteral("brokers")] = m_brokers;
        document[QStringLiteral("devices")] = devices;
        writeFile(path(QStringLiteral("gateway.json")), QJsonDocument(document).toJson());
    }
    void start()
    {
        writeConfiguration();
        gateway.start();
    }

    /// The lines of the audit file that tell how a write ended.
    QVector<QJsonObject> audit() const { return auditLines(false); }
    /// Those that tell of a write before it is sent.
    QVector<QJsonObject> auditedRequests() const { return auditLines(true); }
    QString path(const QString& name) const { return m_folder.filePath(name); }

private:
    QVector<QJsonObject> auditLines(bool areRequests) const
    {
        QVector<QJsonObject> lines;
        for (const QByteArray& text : readFile(path(QStringLiteral("audit"))).split('\n')) {
            const QJsonObject line = QJsonDocument::fromJson(text).object();
            const bool isRequest =
                line[QStringLiteral("outcome")].toString() == QLatin1String("requested");
            if (!text.isEmpty() && isRequest == areRequests)
                lines.append(line);
        }
        return lines;
    }

    QTemporaryDir m_folder;
    QJsonObject m_configuration;
    QJsonArray m_brokers;
    std::map<QString, QJsonObject> m_devices;
    std::map<QString, std::unique_ptr<PlcProcess>> m_plcs;

public:
    GatewayProcess gateway{path(QStringLiteral("gateway.json")), path(QStringLiteral("log"))};
};

} // namespace plc::test

#endif
