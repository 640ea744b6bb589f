#include "gateway/consumer/consumer_process.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "support/data_points.h"

namespace plc::gateway {
namespace {

using values::Value;

struct CommandCase {
    const char* type;
    const char* told; ///< The type of Sparkplug.
    QJsonValue value; ///< As the consumer takes it; 64 bits as texts.
    Value written;
};

const CommandCase kCommands[] = {
    {"BOOL", "Boolean", true, true},
    {"SINT", "Int8", -1, qint64(-1)},
    {"SINT", "Int8", -128, qint64(-128)},
    {"INT", "Int16", -32768, qint64(-32768)},
    {"DINT", "Int32", -2147483648.0, qint64(-2147483648LL)},
    {"LINT", "Int64", QStringLiteral("-9223372036854775808"), std::numeric_limits<qint64>::min()},
    {"USINT", "UInt8", 255, quint64(255)},
    {"UINT", "UInt16", 65535, quint64(65535)},
    {"UDINT", "UInt32", 4294967295.0, quint64(4294967295)},
    {"TIME", "UInt32", 90000, quint64(90000)},
    {"ULINT", "UInt64", QStringLiteral("18446744073709551615"),
     std::numeric_limits<quint64>::max()},
    {"REAL", "Float", 0.1, 0.1f},
    {"LREAL", "Double", 0.1, 0.1},
    {"STRING(4)", "String", QString::fromUtf8("Grüß"), QString::fromUtf8("Grüß")},
    {"WSTRING(3)", "String", QString::fromUtf8("€😀"), QString::fromUtf8("€😀")},
};

class ConsumerCommands : public ::testing::Test {
protected:
    ConsumerCommands()
    {
        Device device;
        device.name = QStringLiteral("pump");
        for (const CommandCase& command : kCommands) {
            Metric metric;
            metric.name = QStringLiteral("P/v%1").arg(device.metrics.size());
            metric.point = test::dataPoint(command.type);
            device.metrics.append(metric);
        }
        m_publisher.addDevice(1, device);
    }

    static QJsonObject request(const QJsonArray& metrics)
    {
        return QJsonObject{{QStringLiteral("dcmd"), metrics},
                           {QStringLiteral("node"), QStringLiteral("hall")},
                           {QStringLiteral("device"), QStringLiteral("pump")},
                           {QStringLiteral("uuid"), QStringLiteral("order 7")}};
    }

    Received received(const QJsonObject& request)
    {
        return m_publisher.received(m_consumer.encoded(request), 1000);
    }

    SparkplugPublisher m_publisher{
        SparkplugIdentity{QStringLiteral("works"), QStringLiteral("hall"), QString()},
        [] { return 0; }};
    test::ConsumerProcess m_consumer{QStringList{
        QStringLiteral("--encode"), QStringLiteral("--group"), QStringLiteral("works")}};
};

TEST_F(ConsumerCommands, AreUnderstoodToTheLastBit)
{
    QJsonArray metrics;
    for (const CommandCase& command : kCommands) {
        metrics.append(
            QJsonObject{{QStringLiteral("name"), QStringLiteral("P/v%1").arg(metrics.size())},
                        {QStringLiteral("type"), QString::fromLatin1(command.told)},
                        {QStringLiteral("value"), command.value}});
    }
    const Received written = received(request(metrics));
    EXPECT_EQ("", written.complaint);
    ASSERT_EQ(int(std::size(kCommands)), int(written.writes.size()));
    for (int i = 0; i < int(std::size(kCommands)); ++i) {
        EXPECT_EQ(i, written.writes[i].metric);
        EXPECT_EQ("order 7", written.writes[i].id);
        EXPECT_EQ("", written.writes[i].error) << kCommands[i].type;
        EXPECT_EQ(QVector<Value>{kCommands[i].written}, written.writes[i].values)
            << kCommands[i].type;
    }
}

TEST_F(ConsumerCommands, OutOfRangeAreRefused)
{
    const QJsonObject metric{{QStringLiteral("name"), QStringLiteral("P/v6")},
                             {QStringLiteral("type"), QStringLiteral("UInt8")},
                             {QStringLiteral("value"), 300}};
    const Received written = received(request({metric}));
    ASSERT_EQ(1, written.writes.size());
    EXPECT_EQ("300 is outside the range of USINT, 0 to 255", written.writes.first().error);
}

TEST_F(ConsumerCommands, AskForARebirth)
{
    const QJsonObject request{{QStringLiteral("rebirth"), true},
                              {QStringLiteral("node"), QStringLiteral("hall")}};
    EXPECT_TRUE(received(request).isRebirthWanted);
}

} // namespace
} // namespace plc::gateway
