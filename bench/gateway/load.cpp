#include "bench/gateway/load.h"

#include <QtCore/QFile>
#include <QtCore/QStandardPaths>
#include <QtNetwork/QTcpServer>

namespace plc::bench {
namespace {

constexpr int kPatience = 60000; // ms

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// Debian keeps it where the PATH of users does not lead.
QString mosquitto()
{
    return QStandardPaths::findExecutable(QStringLiteral("mosquitto"),
                                          {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin"),
                                           QStringLiteral("/usr/local/sbin")});
}

} // namespace

Load::Load(const Size& size) : m_size(size), m_brokerPort(freePort()) {}

Load::~Load()
{
    for (const Process& process : m_gateways) {
        process->terminate();
        process->waitForFinished();
    }
    for (const Process& process : m_simulators) {
        process->kill();
        process->waitForFinished();
    }
    m_broker.kill();
    m_broker.waitForFinished();
}

QString Load::file(const QString& name, const QByteArray& content) const
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return file.fileName();
}

/// As many clocks as there are to be values.
QByteArray Load::project() const
{
    const QByteArray count = QByteArray::number(m_size.values);
    return R"({"name": "load", "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 0, "size": )" +
           QByteArray::number(4 * m_size.values) + R"(}],
  "scopes": [{"name": "Load", "variables": [
    {"name": "clock", "type": "UDINT", "array": [[1, )" +
           count + R"(]], "area": 0, "offset": 0,
     "signal": {"kind": "clock", "interval": 1}}]}],
  "cyclic": []})";
}

QByteArray Load::configuration(int gateway) const
{
    QByteArray devices;
    for (int port : m_ports[size_t(gateway)]) {
        const QByteArray text = QByteArray::number(port);
        devices += (devices.isEmpty() ? "" : ",\n") + QByteArray(R"({"name": "plc)") + text +
                   R"(", "project": "project.json", "port": )" + text +
                   R"(, "labels": ["Load.*"], "cycle": )" + QByteArray::number(m_size.cycle) + "}";
    }
    const QByteArray number = QByteArray::number(gateway);
    return R"({"group": "load", "node": "node)" + number +
           R"(", "brokers": [{"host": "127.0.0.1", "port": )" + QByteArray::number(m_brokerPort) +
           R"(}], "store": {"file": "store)" + number + R"(.sqlite"}, "devices": [)" + devices +
           "]}";
}

Load::Process Load::start(const QString& program, const QStringList& arguments,
                          const QString& log) const
{
    auto process = std::make_unique<QProcess>();
    process->setStandardErrorFile(m_folder.filePath(log));
    process->start(program, arguments);
    if (!process->waitForStarted(kPatience))
        qFatal("%s: %s", qPrintable(program), qPrintable(process->errorString()));
    return process;
}

void Load::startPlants()
{
    const QString configured =
        file(QStringLiteral("broker.conf"), "listener " + QByteArray::number(m_brokerPort) +
                                                " 127.0.0.1\nallow_anonymous true\n"
                                                "max_queued_messages 0\n");
    m_broker.setStandardErrorFile(m_folder.filePath(QStringLiteral("broker.log")));
    m_broker.start(mosquitto(), {QStringLiteral("-c"), configured});
    const QString path = file(QStringLiteral("project.json"), project());
    for (int gateway = 0; gateway < m_size.gateways; ++gateway) {
        m_simulators.push_back(
            start(QStringLiteral(PLC_SIMULATOR),
                  {path, QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--quiet"),
                   QStringLiteral("--plants"), QString::number(m_size.plants)},
                  QStringLiteral("simulator%1.log").arg(gateway)));
        std::vector<int> ports;
        QProcess& simulator = *m_simulators.back();
        while (int(ports.size()) < m_size.plants) {
            while (!simulator.canReadLine()) {
                if (!simulator.waitForReadyRead(kPatience))
                    qFatal("a simulator says nothing");
            }
            const QByteArray line = simulator.readLine().trimmed();
            ports.push_back(line.mid(line.lastIndexOf(':') + 1).toInt());
        }
        m_ports.push_back(ports);
    }
}

void Load::startGateways()
{
    for (int gateway = 0; gateway < m_size.gateways; ++gateway) {
        const QString path =
            file(QStringLiteral("gateway%1.json").arg(gateway), configuration(gateway));
        m_gateways.push_back(start(QStringLiteral(PLC_GATEWAY), {path},
                                   QStringLiteral("gateway%1.log").arg(gateway)));
    }
}

std::vector<qint64> Load::gateways() const
{
    std::vector<qint64> processes;
    for (const Process& process : m_gateways)
        processes.push_back(process->processId());
    return processes;
}

} // namespace plc::bench
