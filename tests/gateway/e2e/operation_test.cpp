// What operators see of the gateway, and how it is run.

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QtNetwork/QLocalSocket>

#include <cstring>

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

using ::testing::HasSubstr;

class GatewayOperation : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (IsSkipped())
            return;
        site.addPlc("oven", kOvenProject,
                    {{QStringLiteral("writable"), QJsonArray{QStringLiteral("Oven.count")}}});
    }
    void startAndAwaitValues()
    {
        site.start();
        ASSERT_TRUE(
            comesTrue([this] { return deviceStatus("oven")[QStringLiteral("good")] == 3; }));
    }
    /// Until the program has begun to deal with it: of two that wait, the system may hand over the
    /// second one first.
    void signalAndAwaitTaking(int number)
    {
        site.gateway.signal(number);
        ASSERT_TRUE(comesTrue([&] {
            const QByteArray status =
                readFile(QStringLiteral("/proc/%1/status").arg(site.gateway.pid()));
            const QByteArray pending = status.mid(status.indexOf("ShdPnd:") + 7, 17).trimmed();
            return (pending.toULongLong(nullptr, 16) >> (number - 1) & 1) == 0;
        }));
    }
    /// The metrics, by HTTP over their socket.
    QByteArray metrics() const
    {
        QLocalSocket socket;
        socket.connectToServer(site.path(QStringLiteral("metrics")));
        EXPECT_TRUE(socket.waitForConnected(kPatience));
        socket.write("GET /metrics HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
        QByteArray reply;
        while (socket.waitForReadyRead(kPatience))
            reply += socket.readAll();
        reply += socket.readAll();
        return reply.mid(reply.indexOf("\r\n\r\n") + 4);
    }
};

TEST_P(GatewayOperation, StatusTellsOfBrokerAndPlcs)
{
    startAndAwaitValues();
    ASSERT_TRUE(comesTrue([this] {
        const QJsonObject broker = site.gateway.status()[QStringLiteral("broker")].toObject();
        return broker[QStringLiteral("connected")].toBool();
    }));
    const GatewayProcess::Answer answer = site.gateway.run({QStringLiteral("status")});
    EXPECT_EQ(0, answer.exitCode);
    EXPECT_THAT(answer.output.toStdString(), ::testing::StartsWith("works/hall, plc-gateway "));
    EXPECT_THAT(answer.output.toStdString(), HasSubstr("\noven    up    "));
    site.plc("oven").command(QStringLiteral("offline"));
    EXPECT_TRUE(comesTrue([this] { return !deviceStatus("oven")[QStringLiteral("up")].toBool(); }));
    EXPECT_EQ(0, site.gateway.stop());
    EXPECT_EQ(1, site.gateway.run({QStringLiteral("status")}).exitCode);
}

TEST_P(GatewayOperation, StatusOfAServiceSaysWhichFolderItLacks)
{
    site.set("status", QStringLiteral("$RUNTIME_DIRECTORY/status"));
    site.writeConfiguration();
    const GatewayProcess::Answer answer = site.gateway.run({QStringLiteral("status")});
    EXPECT_EQ(2, answer.exitCode);
    EXPECT_EQ(
        "plc-gateway: \"$RUNTIME_DIRECTORY/status\" lies in a folder of the service: call it "
        "with RUNTIME_DIRECTORY=…, which is /run/plc-gateway/NAME for plc-gateway@NAME\n",
        answer.errors.toStdString());
}

TEST_P(GatewayOperation, MetricsAreSuchAsPrometheusTakes)
{
    startAndAwaitValues();
    QByteArray text;
    ASSERT_TRUE(comesTrue([&] {
        text = metrics();
        return text.contains("plc_gateway_device_values{device=\"oven\",quality=\"good\"} 3\n");
    }));
    EXPECT_TRUE(text.contains("plc_gateway_device_up{device=\"oven\"} 1\n"));
    EXPECT_TRUE(text.contains("plc_gateway_info{version=\""));
#ifdef PLC_PROMTOOL
    QProcess promtool;
    promtool.setProcessChannelMode(QProcess::MergedChannels);
    promtool.start(QStringLiteral(PLC_PROMTOOL),
                   {QStringLiteral("check"), QStringLiteral("metrics")});
    ASSERT_TRUE(promtool.waitForStarted());
    promtool.write(text);
    promtool.closeWriteChannel();
    ASSERT_TRUE(promtool.waitForFinished(kPatience));
    EXPECT_EQ("", promtool.readAll().toStdString());
#endif
}

TEST_P(GatewayOperation, AStoreIsForOneProcess)
{
    startAndAwaitValues();
    const GatewayProcess::Answer second = site.gateway.run({});
    EXPECT_EQ(1, second.exitCode);
    EXPECT_THAT(second.errors.toStdString(), HasSubstr("the store is in use by another process"));
    EXPECT_TRUE(site.gateway.isRunning());
    EXPECT_EQ(3, deviceStatus("oven")[QStringLiteral("good")].toInt());
}

TEST_P(GatewayOperation, ADamagedStoreIsSetAsideAndTold)
{
    writeFile(site.path(QStringLiteral("store")), "no database");
    startAndAwaitValues();
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("the store was damaged")));
    EXPECT_EQ(0, site.gateway.stop());
}

TEST_P(GatewayOperation, GoesOnWithANewAuditFileWhenTheOldOneWasRenamed)
{
    startAndAwaitValues();
    ASSERT_TRUE(
        QFile::rename(site.path(QStringLiteral("audit")), site.path(QStringLiteral("old"))));
    site.gateway.signal(SIGHUP);
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("the configuration was read again")));
    EXPECT_TRUE(comesTrue([this] { return QFile::exists(site.path(QStringLiteral("audit"))); }));
    EXPECT_EQ(3, deviceStatus("oven")[QStringLiteral("good")].toInt());
}

TEST_P(GatewayOperation, BeginsNothingAnewOnceItEnds)
{
    if (!hasOwnBroker())
        GTEST_SKIP() << "the broker cannot be held";
    startAndAwaitValues();
    // It waits for what the broker has not confirmed.
    ::kill(pid_t(broker().pid()), SIGSTOP);
    const double before = deviceStatus("oven")[QStringLiteral("changesPublished")].toDouble();
    EXPECT_EQ("", site.plc("oven").command(QStringLiteral("set Oven.count 5")));
    EXPECT_TRUE(comesTrue([&] {
        return deviceStatus("oven")[QStringLiteral("changesPublished")].toDouble() > before;
    }));
    signalAndAwaitTaking(SIGTERM);
    site.addPlc("press", kOvenProject);
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    EXPECT_EQ(0, site.gateway.stop());
    ::kill(pid_t(broker().pid()), SIGCONT);
    EXPECT_FALSE(site.gateway.log().contains(QStringLiteral("the configuration was read again")));
    EXPECT_FALSE(site.gateway.log().contains(QStringLiteral("press")));
}

TEST_P(GatewayOperation, SplitsIntoConfigurationsThatWorkInAnotherFolder)
{
    const QString project = QStringLiteral("project0.json");
    ASSERT_TRUE(QFile::exists(site.path(project)));
    site.writeConfiguration();
    QByteArray pattern = readFile(site.path(QStringLiteral("gateway.json")));
    pattern.replace(site.path(project).toUtf8(), project.toUtf8());
    writeFile(site.path(QStringLiteral("pattern.json")), pattern);
    writeFile(site.path(QStringLiteral("plcs.csv")),
              "name,address\nPress 1,10.0.0.1\nPress 2,10.0.0.2\nPress 3,10.0.0.3\n");
    const QString folder = site.path(QStringLiteral("units"));
    ASSERT_TRUE(QDir().mkdir(folder));
    const GatewayProcess::Answer split = GatewayProcess::answerTo(
        {QStringLiteral("split"), QStringLiteral("--devices"), QStringLiteral("2"),
         site.path(QStringLiteral("pattern.json")), site.path(QStringLiteral("plcs.csv")), folder});
    EXPECT_EQ("", split.errors.toStdString());
    EXPECT_EQ("added     hall-01.json\nadded     hall-02.json\n", split.output.toStdString());
    const GatewayProcess::Answer checked = GatewayProcess::answerTo(
        {QStringLiteral("--check"), folder + QStringLiteral("/hall-01.json")});
    EXPECT_EQ("", checked.errors.toStdString());
    EXPECT_EQ("2 PLCs, 6 values, 2 of them writable\n", checked.output.toStdString());
}

TEST_P(GatewayOperation, AWrongConfigurationIsAnExitCodeOfItsOwn)
{
    site.set("keepAlive", 1);
    site.writeConfiguration();
    for (const QStringList& arguments : {QStringList(), QStringList(QStringLiteral("--check"))}) {
        const GatewayProcess::Answer answer = site.gateway.run(arguments);
        EXPECT_EQ(2, answer.exitCode);
        EXPECT_THAT(answer.errors.toStdString(),
                    HasSubstr("/keepAlive: found 1, expected a whole number from 5 to 3600"));
    }
}

TEST_P(GatewayOperation, WhatIsWrongWithADeviceNamesItOnce)
{
    site.addPlc("press", kOvenProject,
                {{QStringLiteral("labels"), QJsonArray{QStringLiteral("Oven.none")}}});
    site.writeConfiguration();
    EXPECT_EQ("plc-gateway: device \"press\": Oven.none: scope \"Oven\" has no \"none\"\n",
              site.gateway.run({QStringLiteral("--check")}).errors.toStdString());
}

/// As started by a service manager that listens on a socket.
class GatewayService : public GatewayOperation {
protected:
    void SetUp() override
    {
        GatewayOperation::SetUp();
        const QByteArray name = site.path(QStringLiteral("notify")).toLocal8Bit();
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        ASSERT_LT(name.size(), int(sizeof address.sun_path));
        std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
        m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const timeval patience = {kPatience / 1000, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ASSERT_EQ(0, ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address));
        ::qputenv("NOTIFY_SOCKET", name);
        ::qputenv("WATCHDOG_USEC", "100000");
    }
    void TearDown() override
    {
        ::qunsetenv("NOTIFY_SOCKET");
        ::qunsetenv("WATCHDOG_USEC");
        ::close(m_socket);
        GatewayOperation::TearDown();
    }
    /// Whether it is told this, behind whatever else.
    bool isTold(const char* what) const
    {
        char text[1000];
        for (;;) {
            const ssize_t size = ::recv(m_socket, text, sizeof text, 0);
            if (size < 0)
                return false;
            if (QByteArray(text, int(size)).startsWith(what))
                return true;
        }
    }

private:
    int m_socket = -1;
};

TEST_P(GatewayService, TellsItsManagerHowItDoes)
{
    site.start();
    EXPECT_TRUE(isTold("READY=1"));
    EXPECT_TRUE(isTold("WATCHDOG=1"));
    EXPECT_TRUE(isTold("STATUS=1 of 1 PLCs up, broker 127.0.0.1:"));
    site.gateway.signal(SIGHUP);
    EXPECT_TRUE(isTold("RELOADING=1"));
    EXPECT_TRUE(isTold("READY=1"));
    EXPECT_EQ(0, site.gateway.stop());
    EXPECT_TRUE(isTold("STOPPING=1"));
}

INSTANTIATE_TEST_SUITE_P(Mqtt, GatewayOperation, ::testing::Values("3.1.1"), versionName);
INSTANTIATE_TEST_SUITE_P(Mqtt, GatewayService, ::testing::Values("3.1.1"), versionName);

} // namespace
} // namespace plc::test
