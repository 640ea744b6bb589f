#ifndef PLC_TESTS_SIMULATOR_RUNNING_SIMULATOR_H
#define PLC_TESTS_SIMULATOR_RUNNING_SIMULATOR_H

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include "simulator/control_commands.h"
#include "simulator/plc_server.h"
#include "tests/project/project_text.h"
#include "tests/simulator/frame_bytes.h"

namespace plc::simulator {
namespace test {

/// Lets events happen until `condition` holds; fails after half a minute.
template <typename Condition>
bool waitUntil(Condition condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.hasExpired(30000))
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    }
    return true;
}

/// A client that sends and receives raw bytes.
class Client {
public:
    explicit Client(quint16 port)
    {
        bool connected = false;
        QObject::connect(&m_socket, &QTcpSocket::connected, [&connected] { connected = true; });
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        EXPECT_TRUE(waitUntil([&connected] { return connected; }));
        m_socket.disconnect();
        m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    }

    void send(const QByteArray& data)
    {
        m_socket.write(data);
        m_socket.flush();
    }

    /// The next `size` bytes, or what there is if the server has closed the connection.
    QByteArray receive(int size)
    {
        waitUntil([&] { return m_socket.bytesAvailable() >= size || !isConnected(); });
        return m_socket.read(size);
    }

    QByteArray receiveReply()
    {
        const QByteArray header = receive(6);
        if (header.size() < 6)
            return header;
        return header + receive(quint8(header[4]) * 256 + quint8(header[5]));
    }

    QByteArray exchange(const QByteArray& request)
    {
        send(request);
        return receiveReply();
    }

    /// Logs in and keeps what requests must end in.
    void logIn()
    {
        EXPECT_EQ(206, exchange(bytes(kIdentification)).size());
        const QByteArray reply = exchange(bytes(kFileRequest));
        ASSERT_EQ(36, reply.size());
        m_trailer = bytes("00 01") + reply.mid(25, 1) + reply.mid(24, 1);
    }

    /// A request, from its service to its last entry, with header and trailer around it.
    QByteArray request(const char* payload) const { return framed(bytes(payload) + m_trailer); }

    bool isConnected() const { return m_socket.state() != QAbstractSocket::UnconnectedState; }
    qint64 bytesAvailable() const { return m_socket.bytesAvailable(); }
    QTcpSocket& socket() { return m_socket; }
    QByteArray trailer() const { return m_trailer; }

private:
    QTcpSocket m_socket;
    QByteArray m_trailer;
};

/// A simulator of a small project in this process: area 1 has 1000 bytes that count up from 0.
class RunningSimulator : public testing::Test {
protected:
    RunningSimulator()
    {
        for (int i = 0; i < 1000; ++i)
            m_memory.write(1, quint32(i), QByteArray(1, char(i)));
        m_settings.services = &m_services;
        m_settings.faults = &m_faults;
        m_settings.beforeAccess = [this] { ++m_accesses; };
        EXPECT_TRUE(m_server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    }

    std::string command(const char* line)
    {
        return m_commands.execute(QString::fromUtf8(line)).toStdString();
    }

    int m_argumentCount = 1;
    char m_program[5] = "test";
    char* m_arguments[2] = {m_program, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    const project::Project m_project = project::test::goodProject(project::test::projectText(
        R"({"name": "speed", "type": "INT", "area": 1, "offset": 16},
           {"name": "lamp", "type": "BIT", "area": 1, "offset": 515, "array": [[0, 3]]},
           {"name": "title", "type": "STRING", "area": 2, "offset": 0, "length": 20})"));
    PlcMemory m_memory{m_project.areas};
    PlcServices m_services{&m_memory, "test"};
    ReplyFaults m_faults;
    ConnectionSettings m_settings;
    PlcServer m_server{&m_settings};
    int m_accesses = 0;
    bool m_stopped = false;
    ControlCommands m_commands{m_project, &m_memory, &m_server, &m_settings,
                               [this] { m_stopped = true; }};
};

} // namespace test
} // namespace plc::simulator

#endif
