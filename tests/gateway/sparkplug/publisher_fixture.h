#ifndef PLC_TESTS_GATEWAY_SPARKPLUG_PUBLISHER_FIXTURE_H
#define PLC_TESTS_GATEWAY_SPARKPLUG_PUBLISHER_FIXTURE_H

#include <gtest/gtest.h>

#include "gateway/sparkplug/sparkplug_payload.pb.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "support/data_points.h"

namespace plc::gateway {

/// A node "works/hall" with two devices: "pump" (1) with the INT "P/speed" and the REAL "P/flow",
/// "oven" (2) with the BOOL "P/on".
class PublisherFixture : public ::testing::Test {
protected:
    PublisherFixture()
    {
        m_publisher.addDevice(1,
                              device("pump", {metric("P/speed", "INT"), metric("P/flow", "REAL")}));
        m_publisher.addDevice(2, device("oven", {metric("P/on", "BOOL")}));
    }

    static Metric metric(const char* name, const char* type)
    {
        Metric metric;
        metric.name = QString::fromUtf8(name);
        metric.point = test::dataPoint(type);
        return metric;
    }

    static Device device(const char* name, const QVector<Metric>& metrics)
    {
        return Device{QString::fromUtf8(name), metrics};
    }

    /// A good value, whose quality was so before.
    static Sample good(int metric, qint64 time, const char* hex)
    {
        Sample sample;
        sample.metric = metric;
        sample.time = time;
        sample.quality = Quality::Good;
        sample.isQualityNew = false;
        sample.bytes = QByteArray::fromHex(hex);
        return sample;
    }

    static QVector<Sample> pumpSamples()
    {
        return {good(0, 900, "0500"), good(1, 800, "0000C03F")};
    }

    static wire::Payload payloadOf(const Message& message)
    {
        wire::Payload payload;
        EXPECT_TRUE(
            payload.ParseFromArray(message.payload.constData(), int(message.payload.size())));
        return payload;
    }

    /// The only message of a list, which must be as all messages of a session are.
    static wire::Payload only(const char* topic, const QVector<Message>& messages)
    {
        EXPECT_EQ(1, messages.size());
        if (messages.isEmpty())
            return {};
        EXPECT_EQ(topic, messages.first().topic);
        EXPECT_EQ(0, messages.first().qos);
        EXPECT_FALSE(messages.first().isRetained);
        return payloadOf(messages.first());
    }

    static const wire::Metric* find(const wire::Payload& payload, const char* name)
    {
        for (const wire::Metric& metric : payload.metrics()) {
            if (metric.name() == name)
                return &metric;
        }
        return nullptr;
    }

    void connect()
    {
        m_publisher.nextWill(900);
        m_publisher.connected();
    }

    /// Connects, and tells the births of the node (number 0) and of the pump (1).
    void begin()
    {
        connect();
        m_publisher.opening(NodeState{QStringLiteral("1.0"), 0, 0}, 1000);
        const wire::Payload birth = only("spBv1.0/works/DBIRTH/hall/pump",
                                         m_publisher.deviceBegins(1, pumpSamples(), 1000));
        if (birth.metrics_size() == 3) {
            m_speed = find(birth, "P/speed")->alias();
            m_flow = find(birth, "P/flow")->alias();
        }
    }

    int m_session = 254;
    SparkplugPublisher m_publisher{
        SparkplugIdentity{QStringLiteral("works"), QStringLiteral("hall"), QString()},
        [this] { return m_session = (m_session + 1) % 256; }};
    quint64 m_speed = 0; ///< Aliases.
    quint64 m_flow = 0;
};

} // namespace plc::gateway

#endif
