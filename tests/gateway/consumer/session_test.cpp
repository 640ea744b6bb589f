#include "gateway/consumer/consumer_process.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "support/data_points.h"

namespace plc::gateway {
namespace {

class ConsumerSession : public ::testing::Test {
protected:
    ConsumerSession()
    {
        Device device;
        device.name = QString::fromUtf8("Öfen");
        Metric metric;
        metric.name = QString::fromUtf8("P/größe");
        metric.point = test::dataPoint("INT");
        metric.point.unit = QString::fromUtf8("°C");
        metric.point.description = QStringLiteral("of the first oven");
        device.metrics.append(metric);
        m_publisher.addDevice(1, device);
    }

    static Sample sample(qint64 time, Quality quality = Quality::Good, bool isQualityNew = false)
    {
        Sample sample;
        sample.time = time;
        sample.quality = quality;
        sample.isQualityNew = isQualityNew;
        sample.bytes = QByteArray::fromHex("0500");
        return sample;
    }

    QJsonObject decoded(const QVector<Message>& messages)
    {
        EXPECT_EQ(1, messages.size());
        return m_consumer.decoded(messages.value(0));
    }

    void connect()
    {
        m_publisher.nextWill(1);
        m_publisher.connected();
    }

    /// Births of node and device; returns the latter's.
    QJsonObject begin(qint64 time)
    {
        EXPECT_EQ("", test::problems(decoded(m_publisher.opening(NodeState(), time))));
        const QJsonObject birth = decoded(m_publisher.deviceBegins(1, {sample(time)}, time));
        EXPECT_EQ("", test::problems(birth));
        return birth;
    }

    QJsonObject change(qint64 time)
    {
        return decoded(m_publisher.changes(1, {sample(time)}, time));
    }

    static QJsonValue property(const QJsonObject& metric, const char* key)
    {
        return metric[QStringLiteral("properties")]
            .toObject()[QString::fromLatin1(key)]
            .toObject()[QStringLiteral("value")];
    }

    int m_session = -1;
    SparkplugPublisher m_publisher{
        SparkplugIdentity{QStringLiteral("works"), QStringLiteral("hall"), QString()},
        [this] { return ++m_session; }};
    test::ConsumerProcess m_consumer{QStringList{QStringLiteral("--decode")}};
};

TEST_F(ConsumerSession, HasNamesUnitsAndDescriptions)
{
    connect();
    const QJsonObject birth = begin(1000);
    EXPECT_EQ(QString::fromUtf8("Öfen"), birth[QStringLiteral("device")].toString());
    const QJsonObject metric = test::metric(birth, "P/größe");
    EXPECT_EQ(QString::fromUtf8("°C"), property(metric, "engUnit").toString());
    EXPECT_EQ("of the first oven", property(metric, "description").toString());
    EXPECT_EQ(1000, metric[QStringLiteral("timestamp")].toInt());
}

TEST_F(ConsumerSession, HasEachQuality)
{
    connect();
    begin(1000);
    const std::pair<Quality, int> codes[] = {
        {Quality::Stale, 500}, {Quality::Bad, 0}, {Quality::Good, 192}};
    for (const auto& [quality, code] : codes) {
        const QJsonObject data =
            decoded(m_publisher.changes(1, {sample(1001, quality, true)}, 1001));
        EXPECT_EQ("", test::problems(data));
        EXPECT_EQ(code, property(test::metric(data, "P/größe"), "Quality").toInt(-1));
    }
}

TEST_F(ConsumerSession, HasNoHolesOverRebirthsAndTheCircleOfNumbers)
{
    connect();
    begin(1000);
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ("", test::problems(change(1001 + i)));
    EXPECT_EQ("", test::problems(decoded(m_publisher.nodeChanges({QString(), 5, 0}, 1400))));
    begin(1500);
    EXPECT_EQ("", test::problems(change(1501)));
    EXPECT_EQ("", test::problems(decoded(m_publisher.history(1, {sample(5), sample(4)}, 1502))));
    EXPECT_EQ("", test::problems(decoded(m_publisher.outcome(WriteOutcome(), 1503))));
    EXPECT_EQ("", test::problems(decoded(m_publisher.deviceEnds(1, 1504))));
    EXPECT_EQ("", test::problems(decoded(m_publisher.deviceBegins(1, {sample(1505)}, 1505))));
}

TEST_F(ConsumerSession, DiesByTheNumberOfItsBirth)
{
    const std::optional<Message> will = m_publisher.nextWill(1);
    m_publisher.connected();
    begin(1000);
    EXPECT_EQ("", test::problems(m_consumer.decoded(*will)));
    EXPECT_EQ("DDATA before a birth of the node", test::problems(change(1001)));
    connect();
    begin(2000);
    // Of the connection before: a broker may tell it late.
    EXPECT_EQ("", test::problems(m_consumer.decoded(*will)));
    EXPECT_EQ("", test::problems(change(2001)));
    EXPECT_EQ("", test::problems(decoded(m_publisher.closing(2002))));
}

TEST_F(ConsumerSession, SeesAHole)
{
    connect();
    begin(1000);
    m_publisher.changes(1, {sample(1001)}, 1001);
    EXPECT_EQ("seq 3 where 2 is expected", test::problems(change(1002)));
}

TEST_F(ConsumerSession, SeesDataBeforeTheBirth)
{
    connect();
    m_publisher.opening(NodeState(), 1000);
    m_publisher.deviceBegins(1, {sample(1000)}, 1000);
    EXPECT_EQ(
        "seq 2 where 0 is expected; DDATA before a birth of the node; "
        "DDATA before a birth of the device; no birth told of alias 5",
        test::problems(change(1001)));
}

} // namespace
} // namespace plc::gateway
