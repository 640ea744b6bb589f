#include "gateway/consumer/consumer_process.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "support/data_points.h"

namespace plc::gateway {
namespace {

struct TypeCase {
    const char* type;
    const char* bytes; ///< Of the driver: least significant first, wide characters most.
    const char* told;  ///< The type that the consumer knows.
    const char* value; ///< As the consumer tells it: JSON, 64 bits as texts.
};

const TypeCase kTypes[] = {
    {"BOOL", "01", "Boolean", "true"},
    {"BOOL", "00", "Boolean", "false"},
    {"BIT", "01", "Boolean", "true"},
    {"SINT", "FF", "Int8", "-1"},
    {"SINT", "80", "Int8", "-128"},
    {"SINT", "7F", "Int8", "127"},
    {"USINT", "FF", "UInt8", "255"},
    {"BYTE", "80", "UInt8", "128"},
    {"INT", "0080", "Int16", "-32768"},
    {"INT", "FF7F", "Int16", "32767"},
    {"UINT", "FFFF", "UInt16", "65535"},
    {"WORD", "0080", "UInt16", "32768"},
    {"DINT", "00000080", "Int32", "-2147483648"},
    {"DINT", "FFFFFF7F", "Int32", "2147483647"},
    {"UDINT", "FFFFFFFF", "UInt32", "4294967295"},
    {"DWORD", "00000080", "UInt32", "2147483648"},
    {"TIME", "D2040000", "UInt32", "1234"},
    {"LINT", "FFFFFFFFFFFFFFFF", "Int64", "\"-1\""},
    {"LINT", "0000000000000080", "Int64", "\"-9223372036854775808\""},
    {"LINT", "FFFFFFFFFFFFFF7F", "Int64", "\"9223372036854775807\""},
    {"ULINT", "FFFFFFFFFFFFFFFF", "UInt64", "\"18446744073709551615\""},
    {"LWORD", "0000000000000080", "UInt64", "\"9223372036854775808\""},
    {"REAL", "0000C03F", "Float", "1.5"},
    {"REAL", "0000C07F", "Float", "\"NaN\""},
    {"REAL", "000080FF", "Float", "\"-Infinity\""},
    {"LREAL", "00000000000002C0", "Double", "-2.25"},
    {"LREAL", "9A9999999999B93F", "Double", "0.1"},
    {"STRING(4)", "4772FCDF", "String", "\"Grüß\""},
    {"STRING(4)", "00", "String", "\"\""},
    {"WSTRING(3)", "20ACD83DDE00", "String", "\"€😀\""},
    {"INT", "", "Int16", "null"},
    {"SINT*2", "E97B", "Int8Array", "[-23,123]"},
    {"INT*2", "D08A3075", "Int16Array", "[-30000,30000]"},
    {"DINT*2", "FFFFFFFFFAAFCB12", "Int32Array", "[-1,315338746]"},
    {"LINT*2", "0000000000000080FFFFFFFFFFFFFF7F", "Int64Array",
     "[\"-9223372036854775808\",\"9223372036854775807\"]"},
    {"USINT*2", "17FA", "UInt8Array", "[23,250]"},
    {"UINT*2", "1E0088CC", "UInt16Array", "[30,52360]"},
    {"UDINT*2", "3400000049FB55C4", "UInt32Array", "[52,3293969225]"},
    {"TIME*2", "01000000FFFFFFFF", "UInt32Array", "[1,4294967295]"},
    {"ULINT*2", "3400000000000000FFFFFFFFFFFFFFFF", "UInt64Array",
     "[\"52\",\"18446744073709551615\"]"},
    {"REAL*2", "0000C03F000020C0", "FloatArray", "[1.5,-2.5]"},
    {"LREAL*2", "9A9999999999B93F00000000000002C0", "DoubleArray", "[0.1,-2.25]"},
    {"BOOL*12", "000001010001000001010001", "BooleanArray",
     "[false,false,true,true,false,true,false,false,true,true,false,true]"},
};

class ConsumerTypes : public ::testing::Test {
protected:
    ConsumerTypes()
    {
        Device device;
        device.name = QStringLiteral("pump");
        for (int i = 0; i < int(std::size(kTypes)); ++i) {
            Metric metric;
            metric.name = QString::fromLatin1(name(i));
            metric.point = test::dataPoint(kTypes[i].type);
            device.metrics.append(metric);
            Sample sample;
            sample.metric = i;
            sample.time = 1000;
            sample.quality = Quality::Good;
            sample.isQualityNew = false;
            sample.bytes = QByteArray::fromHex(kTypes[i].bytes);
            m_samples.append(sample);
        }
        m_publisher.addDevice(1, device);
        m_publisher.nextWill(1);
        m_publisher.connected();
    }

    static QByteArray name(int type) { return "P/v" + QByteArray::number(type); }

    static void expectAll(const QJsonObject& message)
    {
        EXPECT_EQ("", test::problems(message));
        for (int i = 0; i < int(std::size(kTypes)); ++i) {
            const QJsonObject metric = test::metric(message, name(i).constData());
            EXPECT_EQ(kTypes[i].told, metric[QStringLiteral("type")].toString())
                << kTypes[i].type << " " << kTypes[i].bytes;
            EXPECT_EQ(QString::fromUtf8(kTypes[i].value),
                      test::jsonOf(metric[QStringLiteral("value")]))
                << kTypes[i].type << " " << kTypes[i].bytes;
        }
    }

    QVector<Sample> m_samples;
    SparkplugPublisher m_publisher{
        SparkplugIdentity{QStringLiteral("works"), QStringLiteral("hall"), QString()},
        [] { return 0; }};
    test::ConsumerProcess m_consumer{QStringList{QStringLiteral("--decode")}};
};

TEST_F(ConsumerTypes, OfBirthsAndDataAreWhatThePlcHad)
{
    m_consumer.decoded(m_publisher.opening(NodeState(), 1000).first());
    expectAll(m_consumer.decoded(m_publisher.deviceBegins(1, m_samples, 1000).first()));
    expectAll(m_consumer.decoded(m_publisher.changes(1, m_samples, 1001).first()));
}

TEST_F(ConsumerTypes, OfTextsInAnArrayAreTexts)
{
    Device device;
    device.name = QStringLiteral("texts");
    Metric metric;
    metric.name = QStringLiteral("P/texts");
    metric.point = test::dataPoint("STRING(5)*3");
    device.metrics.append(metric);
    m_publisher.addDevice(2, device);
    Sample sample;
    sample.time = 1000;
    sample.bytes = QByteArray("ABC").leftJustified(255, '\0') +
                   QByteArray().leftJustified(255, '\0') +
                   QByteArray(
                       "gr\xFC\xDF"
                       "e");
    m_consumer.decoded(m_publisher.opening(NodeState(), 1000).first());
    const QJsonObject birth =
        m_consumer.decoded(m_publisher.deviceBegins(2, {sample}, 1000).first());
    EXPECT_EQ("", test::problems(birth));
    EXPECT_EQ(QString::fromUtf8("[\"ABC\",\"\",\"grüße\"]"),
              test::jsonOf(test::metric(birth, "P/texts")[QStringLiteral("value")]));
}

} // namespace
} // namespace plc::gateway
