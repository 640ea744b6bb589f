// The program itself, as scripts use it.

#include <gtest/gtest.h>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <csignal>

#include "tests/simulator/running_simulator.h"

namespace plc::simulator {
namespace {

constexpr int kPatience = 30000; // ms

/// The simulator of the demo plant in a process of its own.
class Program : public testing::Test {
protected:
    ~Program() override
    {
        m_process.kill();
        m_process.waitForFinished(kPatience);
    }

    void start(const QStringList& arguments)
    {
        m_process.start(QStringLiteral(PLC_SIMULATOR), arguments);
        ASSERT_TRUE(m_process.waitForStarted(kPatience));
    }

    std::string nextLine()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(kPatience)) {
        }
        return m_process.readLine().trimmed().toStdString();
    }

    /// Starts with the demo plant on a free port and returns the port.
    quint16 startDemo(const QStringList& options = {})
    {
        start(QStringList{QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"),
                          QStringLiteral("--port"), QStringLiteral("0")} +
              options);
        const QString line = QString::fromStdString(nextLine());
        const QString prefix = QStringLiteral("listening on 127.0.0.1:");
        EXPECT_TRUE(line.startsWith(prefix)) << line.toStdString();
        return quint16(line.mid(prefix.size()).toUShort());
    }

    std::string command(const char* line)
    {
        m_process.write(QByteArray(line) + '\n');
        return nextLine();
    }

    int exitCode()
    {
        EXPECT_TRUE(m_process.waitForFinished(kPatience));
        EXPECT_EQ(QProcess::NormalExit, m_process.exitStatus());
        return m_process.exitCode();
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    QProcess m_process;
};

TEST_F(Program, PrintsItsAddressAndObeysCommands)
{
    const quint16 port = startDemo({QStringLiteral("--quiet")});
    EXPECT_NE(0, port);
    EXPECT_EQ("ok 'Cream'", command("get Plant.tank[3].name"));
    EXPECT_EQ("ok", command("set Io.hornOn true"));
    EXPECT_EQ("ok 80 00", command("peek 0 6 2"));
    test::Client client(port);
    client.logIn();
    EXPECT_EQ("bb bb 00 00 00 09 00 00 00 00 00 01 00 80 00",
              test::hex(client.exchange(
                  client.request("2e 00 00 00 00 01 00 00 00 00 00 06 00 00 00 02"))));
    EXPECT_EQ("ok", command("stop"));
    EXPECT_EQ(0, exitCode());
    EXPECT_EQ("", m_process.readAllStandardError().toStdString());
}

TEST_F(Program, LetsValuesLive)
{
    startDemo();
    const std::string first = command("get Plant.heartbeat");
    EXPECT_TRUE(test::waitUntil([&] { return command("get Plant.heartbeat") != first; }));
}

TEST_F(Program, RunsOnWhenItsInputEnds)
{
    const quint16 port = startDemo();
    m_process.closeWriteChannel();
    test::Client client(port);
    client.logIn();
    client.socket().abort();
    ::kill(pid_t(m_process.processId()), SIGTERM);
    EXPECT_EQ(0, exitCode());
}

TEST_F(Program, EndsCleanlyOnCtrlC)
{
    const quint16 port = startDemo();
    test::Client client(port);
    client.logIn();
    ::kill(pid_t(m_process.processId()), SIGINT);
    EXPECT_EQ(0, exitCode());
}

TEST_F(Program, TracesFramesToTheStandardErrorOutput)
{
    const quint16 port = startDemo({QStringLiteral("--verbose")});
    test::Client client(port);
    client.logIn();
    EXPECT_EQ("ok", command("stop"));
    EXPECT_EQ(0, exitCode());
    const QByteArray trace = m_process.readAllStandardError();
    EXPECT_TRUE(
        trace.contains("> bb bb 00 00 00 0e 01 00 00 00 02 00 00 00 06 00 00 00 00 00 "
                       "[identification]"))
        << trace.toStdString();
    EXPECT_TRUE(trace.contains("[good]"));
}

TEST_F(Program, ExitsWith2OnAWrongProjectFile)
{
    start({QStringLiteral("/nowhere/plant.json")});
    EXPECT_EQ(2, exitCode());
    EXPECT_EQ("plc-simulator: /nowhere/plant.json: cannot be read: No such file or directory\n",
              m_process.readAllStandardError().toStdString());
}

TEST_F(Program, ExitsWith2OnWrongOptions)
{
    start({QStringLiteral("--port")});
    EXPECT_EQ(2, exitCode());
}

TEST_F(Program, ExitsWith1IfItCannotListen)
{
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress(QHostAddress::LocalHost), 0));
    start({QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"), QStringLiteral("--port"),
           QString::number(taken.serverPort())});
    EXPECT_EQ(1, exitCode());
}

TEST_F(Program, TellsItsVersion)
{
    start({QStringLiteral("--version")});
    EXPECT_EQ(0, exitCode());
    EXPECT_TRUE(m_process.readAllStandardOutput().startsWith("plc-simulator 1."));
}

} // namespace
} // namespace plc::simulator
