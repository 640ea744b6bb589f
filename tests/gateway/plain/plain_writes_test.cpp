#include "gateway/plain/plain_fixture.h"

namespace plc::gateway {
namespace {

class PlainWrites : public PlainFixture {
protected:
    Received receive(const char* topic, const char* payload, bool isRetained = false)
    {
        return m_publisher.received(Message{QString::fromUtf8(topic), payload, 1, isRetained}, 0);
    }
};

TEST_F(PlainWrites, AreSubscribedToAtUsualDepths)
{
    const QVector<Subscription> list = m_publisher.subscriptions();
    ASSERT_EQ(16, list.size());
    EXPECT_EQ("works/hall/+/+/set", list[0].topic);
    EXPECT_EQ(1, list[0].qos);
    EXPECT_EQ("works/hall/+/+/+/set", list[1].topic);
}

TEST_F(PlainWrites, AreSubscribedToDeeperWhereALabelIs)
{
    m_publisher.addDevice(
        3, device("deep", {metric("1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17", "INT")}));
    EXPECT_EQ(17, m_publisher.subscriptions().size());
}

TEST_F(PlainWrites, NameTheMetricByItsTopic)
{
    begin();
    const Received received = receive("works/hall/pump/P/speed/set", R"({"value":-5,"id":"a"})");
    EXPECT_EQ("", received.complaint);
    EXPECT_FALSE(received.isRebirthWanted);
    ASSERT_EQ(1, received.writes.size());
    const WriteRequest& write = received.writes.first();
    EXPECT_EQ(1, write.device);
    EXPECT_EQ(0, write.metric);
    EXPECT_EQ("P/speed", write.name);
    EXPECT_EQ("a", write.id);
    EXPECT_EQ("", write.error);
    EXPECT_EQ(QVector<values::Value>{qint64(-5)}, write.values);
}

TEST_F(PlainWrites, NameEscapedDevicesToo)
{
    m_publisher.addDevice(3, device("A+", {metric("P/50%", "BOOL")}));
    begin();
    const Received received = receive("works/hall/A%2B/P/50%25/set", "true");
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(3, received.writes.first().device);
    EXPECT_EQ("P/50%", received.writes.first().name);
    EXPECT_EQ(QVector<values::Value>{true}, received.writes.first().values);
}

TEST_F(PlainWrites, ThatMakeNoSenseAreAnswered)
{
    begin();
    const Received text = receive("works/hall/pump/P/speed/set", "\"fast\"");
    ASSERT_EQ(1, text.writes.size());
    EXPECT_EQ(0, text.writes.first().metric);
    EXPECT_EQ("\"fast\" is no value of INT, which takes a number", text.writes.first().error);
    const Received metric = receive("works/hall/pump/P/spede/set", "5");
    ASSERT_EQ(1, metric.writes.size());
    EXPECT_EQ(1, metric.writes.first().device);
    EXPECT_EQ(-1, metric.writes.first().metric);
    EXPECT_EQ("P/spede", metric.writes.first().name);
    EXPECT_EQ("the device has no value \"P/spede\"", metric.writes.first().error);
    const Received device = receive("works/hall/Pump/P/speed/set", "5");
    ASSERT_EQ(1, device.writes.size());
    EXPECT_EQ(-1, device.writes.first().device);
    EXPECT_EQ("Pump/P/speed", device.writes.first().name);
    EXPECT_EQ("there is no device \"Pump\"", device.writes.first().error);
}

TEST_F(PlainWrites, ThatAreRetainedAreNotCarriedOut)
{
    begin();
    const Received received = receive("works/hall/pump/P/speed/set", "5", true);
    EXPECT_TRUE(received.writes.isEmpty());
    EXPECT_NE("", received.complaint);
}

TEST_F(PlainWrites, OnOtherTopicsAreComplainedOf)
{
    begin();
    EXPECT_TRUE(receive("works/hall/pump/P/speed", "5").writes.isEmpty());
    EXPECT_NE("", receive("works/hall/pump/P/speed", "5").complaint);
    const QByteArray deep = "works/hall/pump/" + QByteArray(5000, 'x') + "/set";
    EXPECT_TRUE(receive(deep.constData(), "5").writes.isEmpty());
    EXPECT_NE("", receive(deep.constData(), "5").complaint);
}

TEST_F(PlainWrites, AreNotTheValuesOfALabelNamedSet)
{
    begin();
    const Message own = m_publisher.changes(1, {good(1, "0500")}, 0).first();
    EXPECT_EQ("works/hall/pump/P/set", own.topic);
    const Received received = m_publisher.received(own, 0);
    EXPECT_TRUE(received.writes.isEmpty());
    EXPECT_EQ("", received.complaint);
    EXPECT_EQ("P/set", receive("works/hall/pump/P/set/set", "5").writes.first().name);
}

TEST_F(PlainWrites, ToADeviceThatWentAreRefused)
{
    begin();
    m_publisher.removeDevice(1);
    const Received received = receive("works/hall/pump/P/speed/set", "5");
    ASSERT_EQ(1, received.writes.size());
    EXPECT_EQ(-1, received.writes.first().device);
}

WriteOutcome done(int device, int metric)
{
    WriteOutcome outcome;
    outcome.kind = WriteOutcome::Done;
    outcome.device = device;
    outcome.metric = metric;
    outcome.name = QStringLiteral("P/speed");
    return outcome;
}

using PlainOutcome = PlainFixture;

TEST_F(PlainOutcome, IsToldWhereTheWriteWasAskedFor)
{
    begin();
    EXPECT_EQ(QStringList{QStringLiteral(
                  "works/hall/pump/P/speed/outcome {\"device\":\"pump\",\"name\":\"P/speed\","
                  "\"outcome\":\"done\",\"time\":\"1970-01-01T00:00:00.000Z\"}")},
              lines(m_publisher.outcome(done(1, 0), 0)));
}

TEST_F(PlainOutcome, OfWhatIsUnknownIsToldByDeviceOrNode)
{
    begin();
    EXPECT_EQ("works/hall/pump/outcome", m_publisher.outcome(done(1, -1), 0).first().topic);
    EXPECT_EQ("works/hall/outcome", m_publisher.outcome(done(-1, -1), 0).first().topic);
    EXPECT_EQ("works/hall/oven/P/on/outcome", m_publisher.outcome(done(2, 0), 0).first().topic);
}

TEST_F(PlainOutcome, WaitsForTheOpening)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    EXPECT_TRUE(m_publisher.outcome(done(1, 0), 0).isEmpty());
}

} // namespace
} // namespace plc::gateway
