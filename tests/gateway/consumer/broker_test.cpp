#include "gateway/consumer/consumer_process.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "gateway/support/mosquitto_process.h"
#include "support/data_points.h"

namespace plc::gateway {
namespace {

QString textOf(const QJsonObject& line, const char* key)
{
    return line[QLatin1String(key)].toString();
}

class ConsumerAtBroker : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override { ASSERT_TRUE(m_broker.start()); }

    std::unique_ptr<test::ConsumerProcess> consumer(const QStringList& more = {})
    {
        auto process = std::make_unique<test::ConsumerProcess>(
            QStringList{QStringLiteral("--port"), QString::number(m_broker.port()),
                        QStringLiteral("--group"), QStringLiteral("works"),
                        QStringLiteral("--mqtt"), QString::fromLatin1(GetParam())} +
            more);
        EXPECT_EQ("ready", textOf(process->next(), "event"));
        return process;
    }

    test::MosquittoProcess m_broker;
};

TEST_P(ConsumerAtBroker, GetsASessionAsItWasPublished)
{
    SparkplugPublisher publisher({QStringLiteral("works"), QStringLiteral("hall"), QString()},
                                 [] { return 0; });
    Device device;
    device.name = QStringLiteral("pump");
    Metric metric;
    metric.name = QStringLiteral("P/speed");
    metric.point = test::dataPoint("INT");
    device.metrics.append(metric);
    publisher.addDevice(1, device);
    Sample sample;
    sample.time = 1000;
    sample.quality = Quality::Good;
    sample.bytes = QByteArray::fromHex("FFFF");
    publisher.nextWill(1000);
    publisher.connected();

    const auto reader = consumer();
    const auto writer = consumer();
    writer->publish(publisher.opening(NodeState(), 1000).first());
    writer->publish(publisher.deviceBegins(1, {sample}, 1000).first());
    writer->publish(publisher.changes(1, {sample}, 1001).first());
    for (const char* kind : {"NBIRTH", "DBIRTH", "DDATA"}) {
        const QJsonObject line = reader->next();
        EXPECT_EQ(kind, textOf(line, "kind"));
        EXPECT_EQ("", test::problems(line));
        if (textOf(line, "kind") != QLatin1String("NBIRTH")) {
            EXPECT_EQ(-1, test::metric(line, "P/speed")[QStringLiteral("value")].toInt());
        }
    }
}

TEST_P(ConsumerAtBroker, TellsItsStateAsAHost)
{
    const auto reader = consumer();
    auto host = consumer({QStringLiteral("--state"), QStringLiteral("scada")});
    const QJsonObject birth = reader->next();
    EXPECT_EQ("spBv1.0/STATE/scada", textOf(birth, "topic"));
    const QByteArray online = textOf(birth, "text").toUtf8();
    EXPECT_TRUE(online.startsWith("{\"online\":true,\"timestamp\":")) << online.constData();
    host.reset(); // It is killed.
    const QJsonObject death = reader->next();
    // The will has the time of the birth.
    EXPECT_EQ(QString::fromUtf8(online).replace(QLatin1String("true"), QLatin1String("false")),
              textOf(death, "text"));
}

INSTANTIATE_TEST_SUITE_P(Mqtt, ConsumerAtBroker, ::testing::Values("4", "5"));

} // namespace
} // namespace plc::gateway
