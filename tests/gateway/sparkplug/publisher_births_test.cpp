#include <set>

#include "gateway/sparkplug/publisher_fixture.h"

namespace plc::gateway {
namespace {

using NodeBirth = PublisherFixture;
using DeviceBirth = PublisherFixture;

const NodeState kState{QStringLiteral("1.2"), 3, 4};

TEST_F(NodeBirth, BeginsTheSessionAsNumber0)
{
    connect();
    const wire::Payload birth =
        only("spBv1.0/works/NBIRTH/hall", m_publisher.opening(kState, 1000));
    EXPECT_EQ(1000u, birth.timestamp());
    ASSERT_TRUE(birth.has_seq());
    EXPECT_EQ(0u, birth.seq());
}

TEST_F(NodeBirth, HasAllMetricsOfTheNode)
{
    connect();
    const wire::Payload birth =
        only("spBv1.0/works/NBIRTH/hall", m_publisher.opening(kState, 1000));
    ASSERT_EQ(6, birth.metrics_size());
    ASSERT_NE(nullptr, find(birth, "Gateway/Version"));
    EXPECT_EQ("1.2", find(birth, "Gateway/Version")->string_value());
    EXPECT_EQ(12u, find(birth, "Gateway/Version")->datatype());
    ASSERT_NE(nullptr, find(birth, "Gateway/Stored Changes"));
    EXPECT_EQ(3u, find(birth, "Gateway/Stored Changes")->long_value());
    ASSERT_NE(nullptr, find(birth, "Gateway/Dropped Changes"));
    EXPECT_EQ(4u, find(birth, "Gateway/Dropped Changes")->long_value());
    EXPECT_EQ(8u, find(birth, "Gateway/Dropped Changes")->datatype());
    for (const wire::Metric& metric : birth.metrics()) {
        EXPECT_EQ(1000u, metric.timestamp()) << metric.name();
        EXPECT_TRUE(metric.has_datatype()) << metric.name();
    }
}

TEST_F(NodeBirth, HasTheNumberOfTheWillWithoutAlias)
{
    const std::optional<Message> will = m_publisher.nextWill(900);
    m_publisher.connected();
    const wire::Payload birth =
        only("spBv1.0/works/NBIRTH/hall", m_publisher.opening(kState, 1000));
    ASSERT_NE(nullptr, find(birth, "bdSeq"));
    EXPECT_EQ(4u, find(birth, "bdSeq")->datatype()); // Int64
    EXPECT_EQ(255u, find(birth, "bdSeq")->long_value());
    EXPECT_EQ(255u, find(payloadOf(*will), "bdSeq")->long_value());
    EXPECT_FALSE(find(birth, "bdSeq")->has_alias());
}

TEST_F(NodeBirth, OffersRebirthWithoutAlias)
{
    connect();
    const wire::Payload birth =
        only("spBv1.0/works/NBIRTH/hall", m_publisher.opening(kState, 1000));
    const wire::Metric* rebirth = find(birth, "Node Control/Rebirth");
    ASSERT_NE(nullptr, rebirth);
    EXPECT_EQ(11u, rebirth->datatype()); // Boolean
    EXPECT_TRUE(rebirth->has_boolean_value());
    EXPECT_FALSE(rebirth->boolean_value());
    EXPECT_FALSE(rebirth->has_alias());
}

TEST_F(NodeBirth, AgainKeepsTheNumberOfTheSession)
{
    begin();
    const wire::Payload again =
        only("spBv1.0/works/NBIRTH/hall", m_publisher.opening(kState, 2000));
    EXPECT_EQ(255u, find(again, "bdSeq")->long_value());
    EXPECT_EQ(0u, again.seq());
}

TEST_F(NodeBirth, AgainEndsWhatDevicesHaveBegun)
{
    begin();
    m_publisher.opening(kState, 2000);
    EXPECT_TRUE(m_publisher.changes(1, {good(0, 2000, "0600")}, 2000).isEmpty());
    EXPECT_TRUE(m_publisher.deviceEnds(1, 2000).isEmpty());
}

TEST_F(DeviceBirth, HasAllMetricsWithNameAliasTypeAndTime)
{
    connect();
    m_publisher.opening(kState, 1000);
    const wire::Payload birth =
        only("spBv1.0/works/DBIRTH/hall/pump", m_publisher.deviceBegins(1, pumpSamples(), 1000));
    EXPECT_EQ(1000u, birth.timestamp());
    EXPECT_EQ(1u, birth.seq());
    ASSERT_EQ(3, birth.metrics_size());
    const wire::Metric* speed = find(birth, "P/speed");
    ASSERT_NE(nullptr, speed);
    EXPECT_TRUE(speed->has_alias());
    EXPECT_EQ(2u, speed->datatype()); // Int16
    EXPECT_EQ(900u, speed->timestamp());
    EXPECT_EQ(5u, speed->int_value());
    const wire::Metric* flow = find(birth, "P/flow");
    ASSERT_NE(nullptr, flow);
    EXPECT_EQ(9u, flow->datatype()); // Float
    EXPECT_EQ(800u, flow->timestamp());
    EXPECT_EQ(1.5f, flow->float_value());
}

TEST_F(DeviceBirth, HasTheMetricForOutcomesAsNullThatIsNotKept)
{
    connect();
    m_publisher.opening(kState, 1000);
    const wire::Payload birth =
        only("spBv1.0/works/DBIRTH/hall/pump", m_publisher.deviceBegins(1, pumpSamples(), 1000));
    const wire::Metric* outcome = find(birth, "Gateway/Write Outcome");
    ASSERT_NE(nullptr, outcome);
    EXPECT_EQ(12u, outcome->datatype()); // String
    EXPECT_TRUE(outcome->is_null());
    EXPECT_TRUE(outcome->is_transient());
    EXPECT_FALSE(outcome->has_string_value());
    EXPECT_TRUE(outcome->has_alias());
}

TEST_F(DeviceBirth, IsInTheOrderOfTime)
{
    connect();
    m_publisher.opening(kState, 1000);
    // A clock that was set back by 200 ms.
    const wire::Payload birth =
        only("spBv1.0/works/DBIRTH/hall/pump", m_publisher.deviceBegins(1, pumpSamples(), 700));
    ASSERT_EQ(3, birth.metrics_size());
    EXPECT_EQ("P/flow", birth.metrics(0).name());
    EXPECT_EQ("P/speed", birth.metrics(1).name());
    EXPECT_EQ("Gateway/Write Outcome", birth.metrics(2).name());
    EXPECT_EQ(900u, birth.metrics(2).timestamp());
}

TEST_F(DeviceBirth, TellsWhatWasNeverReadAsNullAndStale)
{
    connect();
    m_publisher.opening(kState, 1000);
    Sample never;
    never.metric = 0;
    never.time = 950;
    const wire::Payload birth =
        only("spBv1.0/works/DBIRTH/hall/oven", m_publisher.deviceBegins(2, {never}, 1000));
    ASSERT_EQ(2, birth.metrics_size());
    const wire::Metric& metric = birth.metrics(0);
    EXPECT_TRUE(metric.is_null());
    EXPECT_EQ(wire::Metric::VALUE_NOT_SET, metric.value_case());
    ASSERT_EQ(1, metric.properties().keys_size());
    EXPECT_EQ("Quality", metric.properties().keys(0));
    EXPECT_EQ(500u, metric.properties().values(0).int_value());
}

TEST_F(DeviceBirth, WaitsForTheBirthOfTheNode)
{
    EXPECT_TRUE(m_publisher.deviceBegins(1, pumpSamples(), 1000).isEmpty());
    connect();
    EXPECT_TRUE(m_publisher.deviceBegins(1, pumpSamples(), 1000).isEmpty());
    m_publisher.opening(kState, 1000);
    EXPECT_EQ(1, m_publisher.deviceBegins(1, pumpSamples(), 1000).size());
    EXPECT_TRUE(m_publisher.deviceBegins(7, {}, 1000).isEmpty());
}

using Aliases = PublisherFixture;

TEST_F(Aliases, AreUniqueOverTheNode)
{
    connect();
    m_publisher.addDevice(3, device("mill", {metric("P/on", "BOOL"), metric("Q/on", "BOOL")}));
    wire::Payload all = payloadOf(m_publisher.opening(kState, 1000).first());
    all.MergeFrom(payloadOf(m_publisher.deviceBegins(1, pumpSamples(), 1000).first()));
    all.MergeFrom(payloadOf(m_publisher.deviceBegins(2, {good(0, 1, "01")}, 1000).first()));
    all.MergeFrom(
        payloadOf(m_publisher.deviceBegins(3, {good(0, 1, "01"), good(1, 1, "01")}, 1000).first()));
    std::set<quint64> aliases;
    for (const wire::Metric& metric : all.metrics()) {
        if (metric.has_alias()) {
            EXPECT_TRUE(aliases.insert(metric.alias()).second) << metric.name();
        }
    }
    EXPECT_EQ(4u + 3 + 2 + 3, aliases.size());
}

TEST_F(Aliases, StayTheSameAtARebirth)
{
    begin();
    m_publisher.opening(kState, 2000);
    const wire::Payload again =
        only("spBv1.0/works/DBIRTH/hall/pump", m_publisher.deviceBegins(1, pumpSamples(), 2000));
    EXPECT_EQ(m_speed, find(again, "P/speed")->alias());
    EXPECT_EQ(m_flow, find(again, "P/flow")->alias());
}

TEST_F(Aliases, OfADeviceThatWentAreNotGivenAgain)
{
    begin();
    m_publisher.deviceEnds(1, 1500);
    m_publisher.removeDevice(1);
    m_publisher.addDevice(3, device("pump", {metric("P/speed", "INT")}));
    const wire::Payload birth = only("spBv1.0/works/DBIRTH/hall/pump",
                                     m_publisher.deviceBegins(3, {good(0, 1, "0100")}, 2000));
    EXPECT_GT(find(birth, "P/speed")->alias(), m_flow);
}

} // namespace
} // namespace plc::gateway
