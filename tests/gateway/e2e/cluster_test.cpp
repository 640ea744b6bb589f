// A cluster of brokers of which one is killed. tools/test_brokers starts them.

#include <QtCore/QSet>

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

QJsonObject brokerAt(const QString& port)
{
    return {{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
            {QStringLiteral("port"), port.toInt()}};
}

TEST(GatewayAtCluster, GoesToTheOtherNodeAndLosesNothing)
{
    const QString victim = qEnvironmentVariable("PLC_VICTIM_PORT");
    const QString survivor = qEnvironmentVariable("PLC_SURVIVOR_PORT");
    const pid_t victimPid = pid_t(qEnvironmentVariable("PLC_VICTIM_PID").toInt());
    if (victimPid <= 0)
        GTEST_SKIP() << "tools/test_brokers runs this with a cluster";
    int argumentCount = 1;
    char name[] = "e2e";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    GatewaySite site;
    PlcProcess& oven = site.addPlc("oven", kOvenProject);
    site.addBroker(brokerAt(victim));
    site.addBroker(brokerAt(survivor));
    Watcher consumer(
        {QStringLiteral("--port"), survivor, QStringLiteral("--group"), QStringLiteral("works")});
    site.start();
    consumer.await("DBIRTH", "oven");
    constexpr int kBefore = 20;
    constexpr int kAll = 40;
    for (int i = 1; i <= kAll; ++i) {
        if (i == kBefore)
            ::kill(victimPid, SIGKILL);
        oven.set("Oven.count", QString::number(i));
        ASSERT_TRUE(oven.isSeen());
    }
    EXPECT_TRUE(
        site.gateway.waitForLog(QStringLiteral("connected to the broker 127.0.0.1:") + survivor))
        << site.gateway.log().toStdString();
    QSet<int> told;
    const auto hasAll = [&] {
        for (const QVector<int>& numbers : {liveNumbers(consumer, "oven", "Oven/count"),
                                            historicalNumbers(consumer, "oven", "Oven/count")}) {
            for (int number : numbers)
                told.insert(number);
        }
        told.remove(0);
        return told.size() == kAll;
    };
    consumer.await([&](const QJsonObject&) { return hasAll(); });
    EXPECT_EQ(kAll, told.size()) << site.gateway.log().toStdString();
}

} // namespace
} // namespace plc::test
