#ifndef PLC_TESTS_GATEWAY_PLAIN_PLAIN_FIXTURE_H
#define PLC_TESTS_GATEWAY_PLAIN_PLAIN_FIXTURE_H

#include <gtest/gtest.h>

#include "gateway/plain/plain_publisher.h"
#include "support/data_points.h"

namespace plc::gateway {

/// A gateway "works/hall" with two devices: "pump" (1) with the INT "P/speed" and the INT "P/set",
/// "oven" (2) with the BOOL "P/on".
class PlainFixture : public ::testing::Test {
protected:
    explicit PlainFixture(bool retainsValues = false)
        : m_publisher({QStringLiteral("works"), QStringLiteral("hall"), retainsValues})
    {
        m_publisher.addDevice(1,
                              device("pump", {metric("P/speed", "INT"), metric("P/set", "INT")}));
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

    static Sample good(int metric, const char* hex)
    {
        Sample sample;
        sample.metric = metric;
        sample.quality = Quality::Good;
        sample.isQualityNew = false;
        sample.bytes = QByteArray::fromHex(hex);
        return sample;
    }

    /// A message in one line: topic, payload, and whether it is retained.
    static QString line(const Message& message)
    {
        EXPECT_EQ(1, message.qos);
        return message.topic + QLatin1Char(' ') + QString::fromUtf8(message.payload) +
               (message.isRetained ? QStringLiteral(" retained") : QString());
    }

    static QStringList lines(const QVector<Message>& messages)
    {
        QStringList list;
        for (const Message& message : messages)
            list.append(line(message));
        return list;
    }

    void begin()
    {
        m_publisher.nextWill(0);
        m_publisher.connected();
        m_publisher.opening(NodeState{QStringLiteral("1.0"), 0, 0}, 0);
        m_publisher.deviceBegins(1, {good(0, "0500"), good(1, "0600")}, 0);
    }

    PlainPublisher m_publisher;
};

} // namespace plc::gateway

#endif
