// Sessions of the program, as a consumer that knows nothing of it sees them.

#include <QtNetwork/QTcpServer>

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

QJsonValue valueOf(const QJsonObject& message, const char* name)
{
    return metric(message, name)[QStringLiteral("value")];
}

int numberOf(const QJsonObject& birth)
{
    return valueOf(birth, "bdSeq").toString().toInt();
}

class GatewaySession : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (!IsSkipped())
            site.addPlc("oven", kOvenProject);
    }

    /// Starts the gateway and reads on to the births of both.
    std::unique_ptr<Watcher> begin(const QStringList& options = {})
    {
        auto consumer = watcher(options);
        site.start();
        EXPECT_FALSE(consumer->await("DBIRTH", "oven").isEmpty());
        return consumer;
    }
};

TEST_P(GatewaySession, BeginsWithBirthsThatHaveNamesUnitsAndValues)
{
    site.plc("oven").set("Oven.count", QStringLiteral("-7"));
    const auto consumer = watcher();
    site.start();
    const QJsonObject node = consumer->await([](const QJsonObject&) { return true; });
    EXPECT_TRUE(Watcher::is(node, "NBIRTH"));
    const QJsonObject device = consumer->await("DBIRTH", "oven");
    EXPECT_EQ(1, device[QStringLiteral("seq")].toInt());
    EXPECT_EQ(QJsonValue(-7), valueOf(device, "Oven/count"));
    const QJsonObject properties =
        metric(device, "Oven/target")[QStringLiteral("properties")].toObject();
    EXPECT_EQ(QString::fromUtf8("°C"),
              properties[QStringLiteral("engUnit")].toObject()[QStringLiteral("value")].toString());
    EXPECT_EQ(
        "what the oven is to reach",
        properties[QStringLiteral("description")].toObject()[QStringLiteral("value")].toString());
}

TEST_P(GatewaySession, TellsEachChangeOnceAndNothingElse)
{
    const auto consumer = begin();
    for (int i = 1; i <= 20; ++i) {
        site.plc("oven").set("Oven.count", QString::number(i));
        ASSERT_TRUE(site.plc("oven").isSeen());
    }
    consumer->awaitValue("DDATA", "oven", "Oven/count", 20);
    consumer->catchUp();
    EXPECT_EQ(countTo(20), liveNumbers(*consumer, "oven", "Oven/count"));
}

TEST_P(GatewaySession, TellsThatAPlcIsLostAndBackWithoutShowingOldValuesAsNew)
{
    site.addPlc("oven", ovenWhoseLossIsNoticedSoon());
    const auto consumer = begin();
    site.plc("oven").set("Oven.count", QStringLiteral("5"));
    consumer->awaitValue("DDATA", "oven", "Oven/count", 5);
    site.plc("oven").kill();
    EXPECT_FALSE(consumer->await("DDEATH", "oven").isEmpty());

    // A session that begins meanwhile tells nothing of it.
    consumer->wantRebirth();
    consumer->await("NBIRTH");
    consumer->catchUp();
    EXPECT_EQ(1, consumer->count("DBIRTH"));

    ASSERT_TRUE(site.plc("oven").start());
    const QJsonObject birth = consumer->await("DBIRTH", "oven");
    EXPECT_EQ(QJsonValue(0), valueOf(birth, "Oven/count"));
    site.plc("oven").set("Oven.count", QStringLiteral("6"));
    EXPECT_FALSE(consumer->awaitValue("DDATA", "oven", "Oven/count", 6).isEmpty());
}

TEST_P(GatewaySession, IsBornAgainOnRequestAndNotMoreThanTwiceASecond)
{
    const auto consumer = begin();
    constexpr int kRequests = 30;
    // Half a second, less what may lie between two readings of a clock on a busy machine.
    constexpr qint64 kShortestPause = 400; // ms
    for (int i = 0; i < kRequests; ++i) {
        consumer->wantRebirth();
        QThread::msleep(50);
    }
    consumer->await("NBIRTH");
    consumer->await("DBIRTH", "oven");
    site.plc("oven").set("Oven.count", QStringLiteral("1"));
    consumer->awaitValue("DDATA", "oven", "Oven/count", 1);
    consumer->catchUp();
    EXPECT_GE(consumer->count("NBIRTH"), 2);
    EXPECT_EQ(consumer->count("NBIRTH"), consumer->count("DBIRTH"));
    qint64 last = 0;
    for (const QJsonObject& message : consumer->messages()) {
        if (!Watcher::is(message, "NBIRTH"))
            continue;
        // The gateway's own time: when messages arrive is up to this machine.
        const qint64 time = qint64(message[QStringLiteral("timestamp")].toDouble());
        EXPECT_GE(time - last, kShortestPause);
        last = time;
    }
}

TEST_P(GatewaySession, PublishesNothingUntilThePrimaryHostIsOnline)
{
    site.set("primaryHost", QStringLiteral("scada"));
    const auto other = watcher();
    site.start();
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("connected to the broker")));
    ASSERT_TRUE(site.plc("oven").isSeen());
    other->catchUp();
    EXPECT_EQ(0, other->count("NBIRTH"));
    // That nothing is published although a broker is there can be seen.
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("waits for the primary host scada")));
    const auto broker = [this] {
        return site.gateway.status()[QStringLiteral("broker")].toObject();
    };
    EXPECT_TRUE(broker()[QStringLiteral("connected")].toBool());
    EXPECT_FALSE(broker()[QStringLiteral("publishing")].toBool(true));
    EXPECT_EQ("waits for the primary host scada",
              broker()[QStringLiteral("problem")].toString().toStdString());

    auto host = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    EXPECT_FALSE(host->await("DBIRTH", "oven").isEmpty());
    other->await("DBIRTH", "oven");
    EXPECT_TRUE(broker()[QStringLiteral("publishing")].toBool());
    EXPECT_EQ("", broker()[QStringLiteral("problem")].toString().toStdString());
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("the primary host is at the broker")));
    // What happens before the host is back comes later.
    host.reset(); // It is killed; the broker tells so.
    EXPECT_FALSE(other->await("NDEATH").isEmpty());
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("the primary host left the broker")));
    site.plc("oven").set("Oven.count", QStringLiteral("8"));
    ASSERT_TRUE(site.plc("oven").isSeen());
    site.plc("oven").set("Oven.count", QStringLiteral("9"));
    ASSERT_TRUE(site.plc("oven").isSeen());
    other->catchUp();
    EXPECT_EQ(1, other->count("NBIRTH"));

    const auto again = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    EXPECT_EQ(QJsonValue(9), valueOf(again->await("DBIRTH", "oven"), "Oven/count"));
    const auto isTold = [&again] {
        return historicalNumbers(*again, "oven", "Oven/count").contains(8);
    };
    again->await([&](const QJsonObject&) { return isTold(); });
    EXPECT_TRUE(isTold());
}

TEST_P(GatewaySession, LooksForThePrimaryHostAgainAndAgainButLogsItOnce)
{
    site.set("primaryHost", QStringLiteral("scada"));
    auto host = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    site.start();
    host->await("DBIRTH", "oven");
    host.reset();
    const auto connections = [this] {
        const QJsonObject broker = site.gateway.status()[QStringLiteral("broker")].toObject();
        return broker[QStringLiteral("connections")].toInt();
    };
    ASSERT_TRUE(comesTrue([&] { return connections() >= 4; }));
    const auto again = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    again->await("DBIRTH", "oven");
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("the primary host is at the broker")));
    EXPECT_EQ(1, site.gateway.log().count(QLatin1String("connected to the broker")));
    EXPECT_EQ(1, site.gateway.log().count(QLatin1String("the primary host left the broker")));
    EXPECT_EQ(0, site.gateway.log().count(QLatin1String("lost the broker")));
}

TEST_P(GatewaySession, LooksForThePrimaryHostEverMoreSeldomWhereItIsAtNoBroker)
{
    // Six connections are three rounds, between which there are pauses of 1 s and 2 s less at most
    // a fourth.
    constexpr int kConnections = 6;
    constexpr int kShortestTime = 2250; // ms
    site.set("primaryHost", QStringLiteral("scada"));
    site.addBroker({{QStringLiteral("host"), QStringLiteral("localhost")},
                    {QStringLiteral("port"), port()},
                    {QStringLiteral("protocol"), QLatin1String(GetParam())}});
    auto host = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    host.reset();
    QElapsedTimer clock;
    clock.start();
    site.start();
    ASSERT_TRUE(comesTrue([&] {
        const QJsonObject broker = site.gateway.status()[QStringLiteral("broker")].toObject();
        return broker[QStringLiteral("connections")].toInt() >= kConnections;
    }));
    EXPECT_GE(clock.elapsed(), kShortestTime);
}

TEST_P(GatewaySession, IsToldDeadByTheBrokerAndBringsWhatWasStoredWhenItIsBack)
{
    site.set("primaryHost", QStringLiteral("scada"));
    auto host = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    site.start();
    const QJsonObject node = host->await("NBIRTH");
    host->await("DBIRTH", "oven");
    host.reset();
    ASSERT_TRUE(site.gateway.waitForLog(QStringLiteral("the primary host left the broker")));
    for (int i = 1; i <= 5; ++i) {
        site.plc("oven").set("Oven.count", QString::number(i));
        ASSERT_TRUE(site.plc("oven").isSeen());
    }
    // What has been seen goes into the store together, each second, and is lost with the process
    // before. When there is more in it than now, all up to here is.
    const auto stored = [this] {
        return site.gateway.status()[QStringLiteral("store")]
            .toObject()[QStringLiteral("stored")]
            .toInt();
    };
    const int before = stored();
    site.plc("oven").set("Oven.count", QStringLiteral("6"));
    ASSERT_TRUE(comesTrue([&] { return stored() > before; }));
    site.gateway.kill();
    const auto other = watcher({QStringLiteral("--state"), QStringLiteral("scada")});
    site.gateway.start();
    const QJsonObject birth = other->await("NBIRTH");
    EXPECT_NE(numberOf(node), numberOf(birth));
    other->await([&](const QJsonObject&) {
        return historicalNumbers(*other, "oven", "Oven/count").contains(5);
    });
    // What was read before the host left may come again, and what came behind may be stored too.
    QVector<int> told = historicalNumbers(*other, "oven", "Oven/count");
    told.removeAll(0);
    told.removeAll(6);
    EXPECT_EQ(countTo(5), told);
}

TEST_P(GatewaySession, DiesWithTheNumberOfItsBirthAndTakesTheNextOne)
{
    const auto consumer = watcher();
    site.start();
    const int first = numberOf(consumer->await("NBIRTH"));
    consumer->await("DBIRTH", "oven");
    site.gateway.kill();
    EXPECT_EQ(first, numberOf(consumer->await("NDEATH")));
    site.gateway.start();
    EXPECT_EQ(first + 1, numberOf(consumer->await("NBIRTH")));
    consumer->await("DBIRTH", "oven");
    EXPECT_EQ(0, site.gateway.stop());
    EXPECT_EQ(first + 1, numberOf(consumer->await("NDEATH")));
    // With MQTT 5 a connection that is closed on purpose leaves the will to the broker, too, as the
    // convention demands; its number shows that it is the same death.
    const bool isToldTwice = QByteArray(GetParam()) == "5";
    if (isToldTwice) {
        EXPECT_EQ(first + 1, numberOf(consumer->await("NDEATH")));
    }
    consumer->catchUp();
    EXPECT_EQ(isToldTwice ? 3 : 2, consumer->count("NDEATH"));
}

TEST_P(GatewaySession, GoesOnWhenAnotherDeviceComesAndGoes)
{
    const auto consumer = begin();
    PlcProcess& oven = site.plc("oven");
    PlcProcess& press = site.addPlc("press", kOvenProject);
    int next = 0;
    const auto goOn = [&] {
        for (int i = 0; i < 10; ++i) {
            oven.set("Oven.count", QString::number(++next));
            ASSERT_TRUE(oven.isSeen());
        }
    };
    goOn();
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    goOn();
    EXPECT_FALSE(consumer->await("DBIRTH", "press").isEmpty());
    press.set("Oven.count", QStringLiteral("3"));
    EXPECT_FALSE(consumer->awaitValue("DDATA", "press", "Oven/count", 3).isEmpty());
    site.removeDevice("press");
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    goOn();
    EXPECT_FALSE(consumer->await("DDEATH", "press").isEmpty());
    goOn();
    consumer->awaitValue("DDATA", "oven", "Oven/count", next);
    EXPECT_EQ(1, consumer->count("NBIRTH"));
    EXPECT_EQ(1, consumer->count("DBIRTH", "oven"));
    EXPECT_EQ(countTo(next), liveNumbers(*consumer, "oven", "Oven/count"));
}

TEST_P(GatewaySession, KeepsItsConfigurationWhenTheNewOneIsWrong)
{
    const auto consumer = begin();
    site.set("group", QStringLiteral("elsewhere"));
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    EXPECT_TRUE(site.gateway.waitForLog(QStringLiteral("the configuration stays as it was")));
    site.plc("oven").set("Oven.count", QStringLiteral("4"));
    EXPECT_FALSE(consumer->awaitValue("DDATA", "oven", "Oven/count", 4).isEmpty());
}

TEST_P(GatewaySession, GoesToTheBrokersOfANewConfigurationWhateverItWasTrying)
{
    const auto consumer = watcher();
    site.forgetBrokers();
    // Takes the connection and says nothing.
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    site.addBroker({{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                    {QStringLiteral("port"), silent.serverPort()},
                    {QStringLiteral("protocol"), QLatin1String(GetParam())}});
    site.start();
    ASSERT_TRUE(site.plc("oven").isSeen());
    site.forgetBrokers();
    site.addBroker({{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                    {QStringLiteral("port"), port()},
                    {QStringLiteral("protocol"), QLatin1String(GetParam())}});
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    EXPECT_FALSE(consumer->await("DBIRTH", "oven").isEmpty());
    EXPECT_EQ(1, consumer->count("NBIRTH"));
    // What was tried before is not what failed.
    EXPECT_FALSE(
        site.gateway.log().contains(QStringLiteral("no connection to the broker 127.0.0.1")));
}

INSTANTIATE_TEST_SUITE_P(Mqtt, GatewaySession, bothVersions(), versionName);

} // namespace
} // namespace plc::test
