#include "gateway/sparkplug/publisher_fixture.h"

namespace plc::gateway {
namespace {

using Death = PublisherFixture;
using Subscriptions = PublisherFixture;

TEST_F(Death, IsTheWillWithTheNumberOfTheSessionOnly)
{
    const std::optional<Message> will = m_publisher.nextWill(900);
    ASSERT_TRUE(will);
    EXPECT_EQ("spBv1.0/works/NDEATH/hall", will->topic);
    EXPECT_EQ(1, will->qos);
    EXPECT_FALSE(will->isRetained);
    const wire::Payload payload = payloadOf(*will);
    EXPECT_FALSE(payload.has_seq());
    ASSERT_EQ(1, payload.metrics_size());
    EXPECT_EQ("bdSeq", payload.metrics(0).name());
    EXPECT_EQ(4u, payload.metrics(0).datatype()); // Int64
    EXPECT_EQ(255u, payload.metrics(0).long_value());
}

TEST_F(Death, OfTheNextConnectionHasTheNextNumberInACircle)
{
    EXPECT_EQ(255u, payloadOf(*m_publisher.nextWill(1)).metrics(0).long_value());
    EXPECT_EQ(0u, payloadOf(*m_publisher.nextWill(2)).metrics(0).long_value());
    EXPECT_EQ(1u, payloadOf(*m_publisher.nextWill(3)).metrics(0).long_value());
}

TEST_F(Death, IsToldBeforeTheConnectionIsClosedOnPurpose)
{
    begin();
    const wire::Payload death = only("spBv1.0/works/NDEATH/hall", m_publisher.closing(5000));
    EXPECT_EQ(5000u, death.timestamp());
    EXPECT_FALSE(death.has_seq());
    ASSERT_EQ(1, death.metrics_size());
    EXPECT_EQ("bdSeq", death.metrics(0).name());
    EXPECT_EQ(255u, death.metrics(0).long_value());
}

TEST_F(Death, IsFollowedByNothing)
{
    begin();
    m_publisher.closing(5000);
    EXPECT_TRUE(m_publisher.changes(1, {good(0, 1, "0100")}, 5001).isEmpty());
    EXPECT_TRUE(m_publisher.deviceBegins(2, {good(0, 1, "01")}, 5001).isEmpty());
    EXPECT_TRUE(m_publisher.nodeChanges(NodeState{QStringLiteral("2"), 0, 0}, 5001).isEmpty());
    EXPECT_TRUE(m_publisher.outcome(WriteOutcome(), 5001).isEmpty());
}

TEST_F(Death, IsNotToldWithoutAConnection)
{
    m_publisher.nextWill(900);
    EXPECT_TRUE(m_publisher.closing(5000).isEmpty());
}

TEST_F(Death, OfTheConnectionEndsDevicesToo)
{
    begin();
    m_publisher.disconnected();
    EXPECT_FALSE(m_publisher.mayPublish());
    connect();
    EXPECT_TRUE(m_publisher.changes(1, {good(0, 1, "0100")}, 5001).isEmpty());
}

TEST_F(Subscriptions, AreForCommandsToNodeAndDevices)
{
    const QVector<Subscription> list = m_publisher.subscriptions();
    ASSERT_EQ(2, list.size());
    EXPECT_EQ("spBv1.0/works/NCMD/hall", list[0].topic);
    EXPECT_EQ(1, list[0].qos);
    EXPECT_EQ("spBv1.0/works/DCMD/hall/+", list[1].topic);
    EXPECT_EQ(1, list[1].qos);
}

TEST_F(Subscriptions, AreEnoughToPublishWithoutAPrimaryHost)
{
    EXPECT_FALSE(m_publisher.mayPublish());
    connect();
    EXPECT_TRUE(m_publisher.mayPublish());
    EXPECT_FALSE(m_publisher.isToLeave());
}

class WithPrimaryHost : public ::testing::Test {
protected:
    QString tell(const char* topic, const char* json)
    {
        const Received received =
            m_publisher.received(Message{QString::fromLatin1(topic), json, 1, true}, 0);
        EXPECT_TRUE(received.writes.isEmpty());
        EXPECT_FALSE(received.isRebirthWanted);
        return received.complaint;
    }

    QString tell(const char* json) { return tell("spBv1.0/STATE/scada", json); }

    SparkplugPublisher m_publisher{
        SparkplugIdentity{QStringLiteral("works"), QStringLiteral("hall"), QStringLiteral("scada")},
        [] { return 0; }};
};

TEST_F(WithPrimaryHost, SubscribesToItsState)
{
    const QVector<Subscription> list = m_publisher.subscriptions();
    ASSERT_EQ(3, list.size());
    EXPECT_EQ("spBv1.0/STATE/scada", list[2].topic);
    EXPECT_EQ(1, list[2].qos);
}

TEST_F(WithPrimaryHost, PublishesWhenItIsOnline)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    EXPECT_FALSE(m_publisher.mayPublish());
    EXPECT_EQ("", tell(R"({"online":true,"timestamp":100})"));
    EXPECT_TRUE(m_publisher.mayPublish());
    EXPECT_FALSE(m_publisher.isToLeave());
}

TEST_F(WithPrimaryHost, StateMayComeBeforeTheSubscriptionsAreConfirmed)
{
    m_publisher.nextWill(0);
    EXPECT_EQ("", tell(R"({"online":true,"timestamp":100})"));
    EXPECT_FALSE(m_publisher.mayPublish());
    m_publisher.connected();
    EXPECT_TRUE(m_publisher.mayPublish());
}

TEST_F(WithPrimaryHost, LeavesWhenItGoesOffline)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    tell(R"({"online":true,"timestamp":100})");
    tell(R"({"online":false,"timestamp":99})");
    EXPECT_FALSE(m_publisher.isToLeave());
    tell(R"({"online":false,"timestamp":100})");
    EXPECT_TRUE(m_publisher.isToLeave());
    EXPECT_FALSE(m_publisher.mayPublish());
    // What it missed meanwhile is told in another session only.
    tell(R"({"online":true,"timestamp":200})");
    EXPECT_TRUE(m_publisher.isToLeave());
    EXPECT_FALSE(m_publisher.mayPublish());
}

TEST_F(WithPrimaryHost, LeavesABrokerWhereItIsOffline)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    tell(R"({"online":false,"timestamp":100})");
    EXPECT_TRUE(m_publisher.isToLeave());
}

TEST_F(WithPrimaryHost, NothingIsKnownOfItAtTheNextBroker)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    tell(R"({"online":false,"timestamp":100})");
    m_publisher.disconnected();
    m_publisher.nextWill(1);
    EXPECT_FALSE(m_publisher.isToLeave());
    m_publisher.connected();
    EXPECT_FALSE(m_publisher.mayPublish());
    tell(R"({"online":true,"timestamp":50})");
    EXPECT_TRUE(m_publisher.mayPublish());
}

TEST_F(WithPrimaryHost, OthersDoNotCount)
{
    m_publisher.nextWill(0);
    m_publisher.connected();
    EXPECT_NE("", tell("spBv1.0/STATE/other", R"({"online":true,"timestamp":100})"));
    EXPECT_NE("", tell("spBv1.0/STATE/Scada", R"({"online":true,"timestamp":100})"));
    EXPECT_FALSE(m_publisher.mayPublish());
}

TEST_F(WithPrimaryHost, ComplainsOfAStateThatMakesNoSense)
{
    EXPECT_EQ("it has no \"online\" of true or false", tell("{}"));
}

} // namespace
} // namespace plc::gateway
