#include "qt_modbus_client.h"

#include <QtCore/QEventLoop>
#include <QtCore/QVector>
#include <QtNetwork/QTcpSocket>
#include <QtSerialBus/QModbusTcpClient>

#include "registers.h"

namespace plc::bench {
namespace {

constexpr int kServerAddress = 1;

/// Does a work over an open connection.
class Worker : public QObject {
public:
    Worker(Work work, int requestsUnderWay, QModbusTcpClient* client, Recorder* recorder)
        : m_work(work),
          m_requests(registerRequests(work)),
          m_requestsUnderWay(requestsUnderWay),
          m_client(client),
          m_recorder(recorder)
    {
    }

    void run()
    {
        m_recorder->begin();
        startPass();
        m_loop.exec();
    }
    const ReceivedValues& values() const { return m_values; }

private:
    void startPass()
    {
        m_values.words.clear();
        m_values.numbers.clear();
        m_sent = 0;
        m_answered = 0;
        ++m_written;
        sendMore();
    }

    void sendMore()
    {
        while (m_sent < m_requests.size() && m_sent - m_answered < size_t(m_requestsUnderWay)) {
            const RegisterRequest& request = m_requests[m_sent++];
            m_recorder->requestSent();
            QModbusReply* reply = send(request);
            if (!reply)
                giveUp(QStringLiteral("Qt: cannot send: %1").arg(m_client->errorString()));
            connect(reply, &QModbusReply::finished, this,
                    [this, reply, &request] { take(reply, request); });
        }
    }

    QModbusReply* send(const RegisterRequest& request)
    {
        const QModbusDataUnit written(QModbusDataUnit::HoldingRegisters, request.address,
                                      QVector<quint16>{m_written});
        switch (request.kind) {
            case RegisterRequest::ReadInput:
                return read(QModbusDataUnit::InputRegisters, request);
            case RegisterRequest::ReadHolding:
                return read(QModbusDataUnit::HoldingRegisters, request);
            case RegisterRequest::Write:
                return m_client->sendWriteRequest(written, kServerAddress);
            case RegisterRequest::WriteAndRead:
                break;
        }
        const QModbusDataUnit back(QModbusDataUnit::HoldingRegisters, request.address, quint16(1));
        return m_client->sendReadWriteRequest(back, written, kServerAddress);
    }

    QModbusReply* read(QModbusDataUnit::RegisterType type, const RegisterRequest& request)
    {
        return m_client->sendReadRequest(
            QModbusDataUnit(type, request.address, quint16(request.registers)), kServerAddress);
    }

    void take(QModbusReply* reply, const RegisterRequest& request)
    {
        if (reply->error() != QModbusDevice::NoError)
            giveUp(QStringLiteral("Qt: %1: %2").arg(titleOf(m_work), reply->errorString()));
        const QVector<quint16> words = reply->result().values();
        if (request.kind == RegisterRequest::WriteAndRead && words.value(0) != m_written)
            giveUp(QStringLiteral("Qt: another value was read back than was written"));
        if (request.kind == RegisterRequest::ReadInput ||
            request.kind == RegisterRequest::ReadHolding)
            receive(m_work, words.constData(), int(words.size()), &m_values);
        reply->deleteLater();
        m_recorder->arrived(request.values);
        ++m_answered;
        if (m_answered < m_requests.size())
            sendMore();
        else if (m_recorder->passDone())
            m_loop.quit();
        else
            startPass();
    }

    const Work m_work;
    const std::vector<RegisterRequest> m_requests;
    const int m_requestsUnderWay;
    QModbusTcpClient* const m_client;
    Recorder* const m_recorder;
    QEventLoop m_loop;
    ReceivedValues m_values;
    size_t m_sent = 0;
    size_t m_answered = 0;
    quint16 m_written = 0;
};

void connectTo(quint16 port, QModbusTcpClient* client)
{
    client->setConnectionParameter(QModbusDevice::NetworkAddressParameter,
                                   QStringLiteral("127.0.0.1"));
    client->setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    client->setTimeout(kAnswerTimeout);
    client->setNumberOfRetries(0);
    QEventLoop loop;
    QObject::connect(
        client, &QModbusDevice::stateChanged, &loop, [&loop](QModbusDevice::State state) {
            if (state == QModbusDevice::ConnectedState || state == QModbusDevice::UnconnectedState)
                loop.quit();
        });
    if (!client->connectDevice() || loop.exec() != 0 ||
        client->state() != QModbusDevice::ConnectedState)
        giveUp(QStringLiteral("Qt: cannot connect: %1").arg(client->errorString()));
    static_cast<QTcpSocket*>(client->device())->setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

} // namespace

void QtModbusClient::measure(Work work, quint16 port, Recorder* recorder)
{
    QModbusTcpClient client;
    connectTo(port, &client);
    ReceivedValues values;
    {
        // Ends first: the client finishes replies once more when it disconnects.
        Worker worker(work, m_requestsUnderWay, &client, recorder);
        worker.run();
        values = worker.values();
    }
    if (isRead(work) && !areRight(work, values))
        giveUp(QStringLiteral("Qt: %1: wrong values").arg(titleOf(work)));
    client.disconnectDevice();
}

} // namespace plc::bench
