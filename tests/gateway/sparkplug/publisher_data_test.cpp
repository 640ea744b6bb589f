#include "gateway/sparkplug/publisher_fixture.h"

namespace plc::gateway {
namespace {

using DeviceData = PublisherFixture;
using History = PublisherFixture;
using NodeData = PublisherFixture;
using Outcome = PublisherFixture;

TEST_F(DeviceData, IsAliasTimeAndValueOnly)
{
    begin();
    const QVector<Message> messages = m_publisher.changes(1, {good(0, 1, "FFFF")}, 2);
    ASSERT_EQ(1, messages.size());
    EXPECT_EQ("spBv1.0/works/DDATA/hall/pump", messages.first().topic);
    EXPECT_EQ(5u, m_speed);
    // Time 2; a metric of 10 bytes: alias 5, time 1, -1 in 32 bits; number 2.
    EXPECT_EQ(
        "0802"
        "120A"
        "1005"
        "1801"
        "50FFFFFFFF0F"
        "1802",
        messages.first().payload.toHex().toUpper());
}

TEST_F(DeviceData, IsInTheOrderOfTime)
{
    begin();
    const wire::Payload data =
        only("spBv1.0/works/DDATA/hall/pump",
             m_publisher.changes(1, {good(0, 2000, "0100"), good(1, 1999, "00000000")}, 2001));
    ASSERT_EQ(2, data.metrics_size());
    EXPECT_EQ(m_flow, data.metrics(0).alias());
    EXPECT_EQ(1999u, data.metrics(0).timestamp());
    EXPECT_EQ(m_speed, data.metrics(1).alias());
    EXPECT_FALSE(data.metrics(0).has_name());
    EXPECT_FALSE(data.metrics(0).has_datatype());
    EXPECT_FALSE(data.metrics(0).has_is_historical());
}

TEST_F(DeviceData, IsNoMessageWithoutChanges)
{
    begin();
    EXPECT_TRUE(m_publisher.changes(1, {}, 2000).isEmpty());
    EXPECT_TRUE(m_publisher.changes(1, {good(2, 1, "00"), good(-1, 1, "00")}, 2000).isEmpty());
}

TEST_F(DeviceData, IsOfBegunDevicesOnly)
{
    begin();
    EXPECT_TRUE(m_publisher.changes(2, {good(0, 1, "01")}, 2000).isEmpty());
    EXPECT_TRUE(m_publisher.history(2, {good(0, 1, "01")}, 2000).isEmpty());
    EXPECT_TRUE(m_publisher.changes(9, {good(0, 1, "01")}, 2000).isEmpty());
    m_publisher.deviceEnds(1, 2000);
    EXPECT_TRUE(m_publisher.changes(1, {good(0, 1, "0100")}, 2000).isEmpty());
}

TEST_F(DeviceData, NumbersGoInACircleOf256)
{
    begin(); // 0 and 1
    for (int i = 2; i < 600; ++i) {
        const wire::Payload data = only("spBv1.0/works/DDATA/hall/pump",
                                        m_publisher.changes(1, {good(0, i, "0100")}, 2000));
        ASSERT_EQ(quint64(i % 256), data.seq());
    }
}

TEST_F(DeviceData, EndsWithADeathThatHasANumber)
{
    begin();
    const wire::Payload death =
        only("spBv1.0/works/DDEATH/hall/pump", m_publisher.deviceEnds(1, 3000));
    EXPECT_EQ(3000u, death.timestamp());
    EXPECT_EQ(2u, death.seq());
    EXPECT_EQ(0, death.metrics_size());
    EXPECT_TRUE(m_publisher.deviceEnds(1, 3000).isEmpty());
}

TEST_F(History, IsToldAsSuch)
{
    begin();
    const wire::Payload data =
        only("spBv1.0/works/DDATA/hall/pump",
             m_publisher.history(1, {good(0, 100, "0100"), good(0, 200, "0200")}, 2000));
    ASSERT_EQ(2, data.metrics_size());
    EXPECT_TRUE(data.metrics(0).is_historical());
    EXPECT_EQ(100u, data.metrics(0).timestamp());
    EXPECT_EQ(1u, data.metrics(0).int_value());
    EXPECT_TRUE(data.metrics(1).is_historical());
    EXPECT_EQ(200u, data.metrics(1).timestamp());
    EXPECT_EQ(2u, data.metrics(1).int_value());
}

TEST_F(History, FallsIntoMessagesOf500)
{
    begin();
    QVector<Sample> samples;
    for (int i = 0; i < 1001; ++i)
        samples.append(good(0, i, "0100"));
    const QVector<Message> messages = m_publisher.history(1, samples, 2000);
    ASSERT_EQ(3, messages.size());
    EXPECT_EQ(500, payloadOf(messages[0]).metrics_size());
    EXPECT_EQ(500, payloadOf(messages[1]).metrics_size());
    ASSERT_EQ(1, payloadOf(messages[2]).metrics_size());
    EXPECT_EQ(1000u, payloadOf(messages[2]).metrics(0).timestamp());
    EXPECT_EQ(2u, payloadOf(messages[0]).seq());
    EXPECT_EQ(4u, payloadOf(messages[2]).seq());
    EXPECT_EQ(2000u, payloadOf(messages[2]).timestamp());
}

TEST_F(History, OfLargeValuesFallsIntoMoreMessages)
{
    m_publisher.addDevice(3, device("store", {metric("P/block", "BYTE*200000")}));
    begin();
    Sample sample = good(0, 1, "");
    sample.bytes = QByteArray(200000, 'x');
    m_publisher.deviceBegins(3, {sample}, 1000);
    const QVector<Message> messages = m_publisher.history(3, {sample, sample, sample}, 2000);
    ASSERT_EQ(2, messages.size());
    EXPECT_EQ(2, payloadOf(messages[0]).metrics_size());
    EXPECT_EQ(1, payloadOf(messages[1]).metrics_size());
}

TEST_F(NodeData, TellsWhatHasChanged)
{
    begin();
    EXPECT_TRUE(m_publisher.nodeChanges(NodeState{QStringLiteral("1.0"), 0, 0}, 2000).isEmpty());
    const wire::Payload data =
        only("spBv1.0/works/NDATA/hall",
             m_publisher.nodeChanges(NodeState{QStringLiteral("1.0"), 7, 0}, 2000));
    EXPECT_EQ(2u, data.seq());
    EXPECT_EQ(2000u, data.timestamp());
    ASSERT_EQ(1, data.metrics_size());
    EXPECT_EQ(2u, data.metrics(0).alias());
    EXPECT_EQ(7u, data.metrics(0).long_value());
    EXPECT_EQ(2000u, data.metrics(0).timestamp());
    EXPECT_FALSE(data.metrics(0).has_name());
    EXPECT_FALSE(data.metrics(0).has_datatype());
    EXPECT_TRUE(m_publisher.nodeChanges(NodeState{QStringLiteral("1.0"), 7, 0}, 3000).isEmpty());
}

TEST_F(NodeData, WaitsForTheBirth)
{
    connect();
    EXPECT_TRUE(m_publisher.nodeChanges(NodeState{QStringLiteral("1.0"), 7, 0}, 2000).isEmpty());
}

WriteOutcome refused(int device)
{
    WriteOutcome outcome;
    outcome.kind = WriteOutcome::Refused;
    outcome.device = device;
    outcome.name = QStringLiteral("P/speed");
    outcome.id = QStringLiteral("7");
    outcome.value = QStringLiteral("300");
    outcome.reason = QStringLiteral("not writable");
    outcome.time = 1500;
    return outcome;
}

TEST_F(Outcome, IsToldByAMetricOfTheDevice)
{
    begin();
    const wire::Payload data =
        only("spBv1.0/works/DDATA/hall/pump", m_publisher.outcome(refused(1), 2000));
    ASSERT_EQ(1, data.metrics_size());
    EXPECT_EQ(m_flow + 1, data.metrics(0).alias());
    EXPECT_EQ(1500u, data.metrics(0).timestamp());
    EXPECT_TRUE(data.metrics(0).is_transient());
    EXPECT_EQ(R"({"id":"7","device":"pump","name":"P/speed","value":"300","outcome":"refused",)"
              R"("reason":"not writable","time":"1970-01-01T00:00:01.500Z"})",
              data.metrics(0).string_value());
}

TEST_F(Outcome, IsToldByTheNodeWhereTheDeviceIsNotThere)
{
    begin();
    const wire::Payload unknown =
        only("spBv1.0/works/NDATA/hall", m_publisher.outcome(refused(-1), 2000));
    ASSERT_EQ(1, unknown.metrics_size());
    EXPECT_EQ(4u, unknown.metrics(0).alias());
    EXPECT_EQ(0u, unknown.metrics(0).string_value().find(R"({"id":"7","name":"P/speed")"));
    const wire::Payload notBegun =
        only("spBv1.0/works/NDATA/hall", m_publisher.outcome(refused(2), 2000));
    ASSERT_EQ(1, notBegun.metrics_size());
    EXPECT_NE(std::string::npos, notBegun.metrics(0).string_value().find(R"("device":"oven")"));
}

TEST_F(Outcome, WaitsForTheBirth)
{
    connect();
    EXPECT_TRUE(m_publisher.outcome(refused(1), 2000).isEmpty());
}

} // namespace
} // namespace plc::gateway
