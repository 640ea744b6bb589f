// Plain JSON, as someone with nothing but mosquitto_sub and mosquitto_pub sees it.

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

/// A line of mosquitto_sub -v.
struct Line {
    QString topic;
    QJsonObject json;
    bool isEmpty = false;
};

class Subscriber {
public:
    Subscriber(int port, const char* version)
        : m_process(QStringLiteral(PLC_MOSQUITTO_SUB),
                    {QStringLiteral("-p"), QString::number(port), QStringLiteral("-V"),
                     QLatin1String(version) == QLatin1String("5") ? QStringLiteral("mqttv5")
                                                                  : QStringLiteral("mqttv311"),
                     QStringLiteral("-v"), QStringLiteral("-q"), QStringLiteral("1"),
                     QStringLiteral("-t"), QStringLiteral("works/hall/#")})
    {
    }
    Line next()
    {
        const QString line = m_process.nextLine();
        EXPECT_FALSE(line.isEmpty()) << m_process.errors().toStdString();
        const QString payload = line.section(QLatin1Char(' '), 1);
        return {line.section(QLatin1Char(' '), 0, 0),
                QJsonDocument::fromJson(payload.toUtf8()).object(),
                payload == QLatin1String("(null)")};
    }
    /// The next message with this topic; one without a topic if none comes.
    Line await(const char* topic)
    {
        Line line = next();
        while (!line.topic.isEmpty() && line.topic != QLatin1String(topic))
            line = next();
        return line;
    }
    /// Reads on until this topic has this value.
    Line awaitValue(const char* topic, const QJsonValue& value)
    {
        Line line = await(topic);
        while (!line.topic.isEmpty() && line.json[QStringLiteral("value")] != value)
            line = await(topic);
        return line;
    }
    /// Reads on until this topic has an empty message.
    bool awaitEmpty(const char* topic)
    {
        Line line = await(topic);
        while (!line.topic.isEmpty() && !line.isEmpty)
            line = await(topic);
        return line.isEmpty;
    }
    Line awaitState(const char* topic, bool isOnline)
    {
        Line line = await(topic);
        while (!line.topic.isEmpty() && line.json[QStringLiteral("online")] != isOnline)
            line = await(topic);
        return line;
    }

private:
    LineProcess m_process;
};

class PlainGateway : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (IsSkipped())
            return;
        site.set("format", QStringLiteral("json"));
        site.set("retain", true);
        addWritableOven(kOvenProject);
    }
    void addWritableOven(const QByteArray& project)
    {
        site.addPlc("oven", project,
                    {{QStringLiteral("writable"), QJsonArray{QStringLiteral("Oven.target")}}});
    }
    void publish(const char* topic, const char* text)
    {
        const QString version = QLatin1String(GetParam()) == QLatin1String("5")
                                    ? QStringLiteral("mqttv5")
                                    : QStringLiteral("mqttv311");
        EXPECT_EQ(0, QProcess::execute(
                         QStringLiteral(PLC_MOSQUITTO_PUB),
                         {QStringLiteral("-p"), QString::number(port()), QStringLiteral("-V"),
                          version, QStringLiteral("-q"), QStringLiteral("1"), QStringLiteral("-t"),
                          QLatin1String(topic), QStringLiteral("-m"), QLatin1String(text)}));
    }
    static QString wordOf(const Line& line, const char* key)
    {
        return line.json[QLatin1String(key)].toString();
    }
};

TEST_P(PlainGateway, TellsValuesWithUnitTimeAndQuality)
{
    addWritableOven(ovenWhoseLossIsNoticedSoon());
    site.plc("oven").set("Oven.target", QStringLiteral("-5"));
    Subscriber subscriber(port(), GetParam());
    site.start();
    const Line target = subscriber.awaitValue("works/hall/oven/Oven/target", -5);
    EXPECT_EQ(QString::fromUtf8("°C"), wordOf(target, "unit"));
    EXPECT_EQ("good", wordOf(target, "quality").toStdString());
    EXPECT_TRUE(wordOf(target, "time").endsWith(QLatin1Char('Z')));
    site.plc("oven").set("Oven.count", QStringLiteral("2147483647"));
    subscriber.awaitValue("works/hall/oven/Oven/count", 2147483647);
    // Who comes later finds what is so now.
    Subscriber late(port(), GetParam());
    EXPECT_EQ("works/hall/oven/Oven/target",
              late.awaitValue("works/hall/oven/Oven/target", -5).topic.toStdString());

    site.plc("oven").kill();
    subscriber.awaitState("works/hall/oven/state", false);
    ASSERT_TRUE(site.plc("oven").start());
    subscriber.awaitState("works/hall/oven/state", true);
    site.gateway.kill();
    const Line state = subscriber.awaitState("works/hall/state", false);
    EXPECT_EQ(1, state.json.size());
}

TEST_P(PlainGateway, ShowsNoDeviceOnlineThatWasSoForAProcessThatWasKilled)
{
    addWritableOven(ovenWhoseLossIsNoticedSoon());
    Subscriber subscriber(port(), GetParam());
    site.start();
    subscriber.awaitState("works/hall/oven/state", true);
    site.gateway.kill();
    subscriber.awaitState("works/hall/state", false);
    site.plc("oven").kill();
    site.gateway.start();
    EXPECT_FALSE(subscriber.awaitState("works/hall/oven/state", false).topic.isEmpty());
    EXPECT_FALSE(subscriber.awaitState("works/hall/state", true).topic.isEmpty());
}

TEST_P(PlainGateway, TakesBackWhatItNoLongerPublishes)
{
    site.addPlc("press", kOvenProject);
    Subscriber subscriber(port(), GetParam());
    site.start();
    subscriber.awaitState("works/hall/oven/state", true);
    subscriber.awaitState("works/hall/press/state", true);
    // Of a device that goes while the gateway runs, and of one that goes while it does not.
    site.removeDevice("oven");
    site.writeConfiguration();
    site.gateway.signal(SIGHUP);
    EXPECT_FALSE(subscriber.awaitState("works/hall/oven/state", false).topic.isEmpty());
    EXPECT_TRUE(subscriber.awaitEmpty("works/hall/oven/Oven/count"));
    site.gateway.kill();
    subscriber.awaitState("works/hall/state", false);
    site.removeDevice("press");
    site.addPlc("saw", kOvenProject);
    site.start();
    EXPECT_TRUE(subscriber.awaitEmpty("works/hall/press/Oven/count"));
    EXPECT_TRUE(subscriber.awaitEmpty("works/hall/press/state"));
    EXPECT_FALSE(subscriber.awaitState("works/hall/state", true).topic.isEmpty());
    // Who comes later sees nothing but what is so now.
    subscriber.awaitState("works/hall/saw/state", true);
    Subscriber late(port(), GetParam());
    for (Line line = late.next(); line.topic != QLatin1String("works/hall/saw/state");
         line = late.next())
        ASSERT_FALSE(line.topic.contains(QLatin1String("oven")) ||
                     line.topic.contains(QLatin1String("press")) || line.topic.isEmpty())
            << line.topic.toStdString();
}

TEST_P(PlainGateway, TellsHowWritesEnd)
{
    Subscriber subscriber(port(), GetParam());
    site.start();
    subscriber.await("works/hall/oven/Oven/target");
    publish("works/hall/oven/Oven/target/set", R"({"value":7,"id":"a"})");
    Line outcome = subscriber.await("works/hall/oven/Oven/target/outcome");
    EXPECT_EQ("done", wordOf(outcome, "outcome").toStdString());
    EXPECT_EQ("a", wordOf(outcome, "id").toStdString());
    EXPECT_EQ("7", site.plc("oven").command(QStringLiteral("get Oven.target")).toStdString());
    publish("works/hall/oven/Oven/count/set", "7");
    outcome = subscriber.await("works/hall/oven/Oven/count/outcome");
    EXPECT_EQ("refused", wordOf(outcome, "outcome").toStdString());
    EXPECT_EQ("the configuration does not list it as writable",
              wordOf(outcome, "reason").toStdString());
    publish("works/hall/oven/Oven/target/set", "32768");
    outcome = subscriber.await("works/hall/oven/Oven/target/outcome");
    EXPECT_EQ("refused", wordOf(outcome, "outcome").toStdString());
    EXPECT_EQ("7", site.plc("oven").command(QStringLiteral("get Oven.target")).toStdString());
    EXPECT_EQ(3, site.audit().size());
}

INSTANTIATE_TEST_SUITE_P(Mqtt, PlainGateway, bothVersions(), versionName);

} // namespace
} // namespace plc::test
