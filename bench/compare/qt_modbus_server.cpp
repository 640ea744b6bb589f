#include "qt_modbus_server.h"

#include <QtCore/QCoreApplication>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <QtSerialBus/QModbusTcpServer>

#include "registers.h"
#include "sockets.h"

namespace plc::bench {
namespace {

QVector<quint16> wordsOf(const std::vector<std::uint16_t>& registers)
{
    QVector<quint16> words;
    words.reserve(int(registers.size()));
    for (std::uint16_t word : registers)
        words.append(word);
    return words;
}

class PlantServer : public QModbusTcpServer {
public:
    PlantServer()
    {
        const RegisterMap map = registerMap();
        const QModbusDataUnit input(QModbusDataUnit::InputRegisters, 0, wordsOf(map.input));
        const QModbusDataUnit holding(QModbusDataUnit::HoldingRegisters, 0, wordsOf(map.holding));
        setMap({{QModbusDataUnit::InputRegisters, input},
                {QModbusDataUnit::HoldingRegisters, holding}});
        setData(input);
        setData(holding);
        setServerAddress(1);
        m_isFilling = false;
    }

protected:
    bool readData(QModbusDataUnit* unit) const override
    {
        return !touchesHole(*unit) && QModbusTcpServer::readData(unit);
    }
    bool writeData(const QModbusDataUnit& unit) override
    {
        return (m_isFilling || !touchesHole(unit)) && QModbusTcpServer::writeData(unit);
    }

private:
    static bool touchesHole(const QModbusDataUnit& unit)
    {
        return unit.registerType() == QModbusDataUnit::HoldingRegisters && unit.valueCount() > 1;
    }

    bool m_isFilling = true;
};

class ImmediateReplies : public QModbusTcpConnectionObserver {
public:
    bool acceptNewConnection(QTcpSocket* client) override
    {
        client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        return true;
    }
};

/// A port that was free a moment ago; the server cannot tell which one it has picked.
quint16 freePort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost))
        giveUp(QStringLiteral("Qt: no free port: %1").arg(probe.errorString()));
    return probe.serverPort();
}

} // namespace

int runQtModbusServer()
{
    PlantServer server;
    server.installConnectionObserver(new ImmediateReplies);
    const quint16 port = freePort();
    server.setConnectionParameter(QModbusDevice::NetworkAddressParameter,
                                  QStringLiteral("127.0.0.1"));
    server.setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    if (!server.connectDevice())
        giveUp(QStringLiteral("Qt: cannot listen: %1").arg(server.errorString()));
    tellPort(port);
    return QCoreApplication::exec();
}

} // namespace plc::bench
