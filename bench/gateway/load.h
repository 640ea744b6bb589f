#ifndef PLC_BENCH_GATEWAY_LOAD_H
#define PLC_BENCH_GATEWAY_LOAD_H

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

namespace plc::bench {

/// A broker, gateways, and simulated PLCs for each of them, in a folder of their own.
class Load {
public:
    struct Size {
        int gateways;
        int plants; ///< Of each gateway.
        int values; ///< Of each PLC.
        int cycle;  ///< ms
    };

    explicit Load(const Size& size);
    ~Load();

    /// Everything but the gateways.
    void startPlants();
    void startGateways();

    quint16 brokerPort() const { return m_brokerPort; }
    std::vector<qint64> gateways() const;
    qint64 broker() const { return m_broker.processId(); }

private:
    using Process = std::unique_ptr<QProcess>;

    QString file(const QString& name, const QByteArray& content) const;
    QByteArray project() const;
    QByteArray configuration(int gateway) const;
    Process start(const QString& program, const QStringList& arguments, const QString& log) const;

    const Size m_size;
    const QTemporaryDir m_folder;
    const quint16 m_brokerPort;
    QProcess m_broker;
    std::vector<Process> m_simulators;
    std::vector<std::vector<int>> m_ports; ///< Of the PLCs of each gateway.
    std::vector<Process> m_gateways;
};

} // namespace plc::bench

#endif
