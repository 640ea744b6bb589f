#include "gateway/plain/plain_json.h"

#include <gtest/gtest.h>

#include "support/data_points.h"

namespace plc::gateway {
namespace {

QByteArray message(const char* type, const char* bytes, const char* unit = "",
                   Quality quality = Quality::Good, bool isHistorical = false)
{
    Metric metric;
    metric.point = test::dataPoint(type);
    metric.point.unit = QString::fromUtf8(unit);
    Sample sample;
    sample.time = 1795337040123;
    sample.quality = quality;
    sample.bytes = QByteArray::fromHex(bytes);
    return valueMessage(metric, sample, isHistorical);
}

/// What stands between {"value": and the time.
QByteArray value(const char* type, const char* bytes)
{
    const QByteArray json = message(type, bytes);
    const QByteArray end = ",\"time\":\"2026-11-22T08:44:00.123Z\",\"quality\":\"good\"}";
    EXPECT_TRUE(json.startsWith("{\"value\":")) << json.constData();
    EXPECT_TRUE(json.endsWith(end)) << json.constData();
    return json.mid(9, json.size() - 9 - end.size());
}

TEST(PlainValue, HasUnitTimeAndQuality)
{
    EXPECT_EQ(QByteArray("{\"value\":1.5,\"unit\":\"°C\",\"time\":\"2026-11-22T08:44:00.123Z\","
                         "\"quality\":\"good\"}"),
              message("REAL", "0000C03F", "°C"));
}

TEST(PlainValue, OfEachTypeIsExact)
{
    EXPECT_EQ("-1", value("SINT", "FF"));
    EXPECT_EQ("-128", value("SINT", "80"));
    EXPECT_EQ("-32768", value("INT", "0080"));
    EXPECT_EQ("-2147483648", value("DINT", "00000080"));
    EXPECT_EQ("-9223372036854775808", value("LINT", "0000000000000080"));
    EXPECT_EQ("18446744073709551615", value("ULINT", "FFFFFFFFFFFFFFFF"));
    EXPECT_EQ("255", value("BYTE", "FF"));
    EXPECT_EQ("true", value("BOOL", "01"));
    EXPECT_EQ("-2.25", value("LREAL", "00000000000002C0"));
    EXPECT_EQ("\"nan\"", value("REAL", "0000C07F"));
    EXPECT_EQ("\"Gr\xC3\xBC\xC3\x9F\\\"\"", value("STRING(5)", "4772FCDF22"));
    EXPECT_EQ("\"\\ud83d\\ude00\"", value("WSTRING(2)", "D83DDE00"));
    EXPECT_EQ("[-30000, 30000]", value("INT*2", "D08A3075"));
}

TEST(PlainValue, OfTimeIsInMilliseconds)
{
    EXPECT_EQ(QByteArray("{\"value\":1234,\"unit\":\"ms\",\"time\":\"2026-11-22T08:44:00.123Z\","
                         "\"quality\":\"good\"}"),
              message("TIME", "D2040000"));
}

TEST(PlainValue, NeverReadIsNull)
{
    EXPECT_EQ(QByteArray("{\"value\":null,\"time\":\"2026-11-22T08:44:00.123Z\","
                         "\"quality\":\"stale\"}"),
              message("INT", "", "", Quality::Stale));
}

TEST(PlainValue, TellsWhenItIsBadOrHistorical)
{
    EXPECT_EQ(QByteArray("{\"value\":5,\"time\":\"2026-11-22T08:44:00.123Z\","
                         "\"quality\":\"bad\",\"historical\":true}"),
              message("INT", "0500", "", Quality::Bad, true));
}

TEST(PlainState, TellsWhatIsKnown)
{
    EXPECT_EQ("{\"online\":true,\"time\":\"1970-01-01T00:00:00.000Z\"}", stateMessage(true, 0));
    EXPECT_EQ("{\"online\":false,\"time\":\"1970-01-01T00:00:00.000Z\"}", stateMessage(false, 0));
    EXPECT_EQ("{\"online\":false}", nodeLostMessage());
    EXPECT_EQ(
        "{\"online\":true,\"version\":\"1.0\",\"stored\":3,\"dropped\":4,"
        "\"time\":\"1970-01-01T00:00:00.000Z\"}",
        nodeStateMessage(NodeState{QStringLiteral("1.0"), 3, 4}, 0));
}

WriteRequest write(const char* type, const QByteArray& json)
{
    Metric metric;
    metric.point = test::dataPoint(type);
    return readWrite(metric, json);
}

TEST(PlainWrite, TakesABareValue)
{
    const WriteRequest request = write("INT", "-5");
    EXPECT_EQ("", request.error);
    EXPECT_EQ("", request.id);
    EXPECT_EQ(QVector<values::Value>{qint64(-5)}, request.values);
    EXPECT_EQ(QVector<values::Value>{true}, write("BOOL", "true").values);
    EXPECT_EQ(QVector<values::Value>{0.1f}, write("REAL", "0.1").values);
    EXPECT_EQ(QVector<values::Value>{std::numeric_limits<quint64>::max()},
              write("ULINT", "18446744073709551615").values);
    EXPECT_EQ(QVector<values::Value>{QStringLiteral("it's")},
              write("STRING(9)", "\"it's\"").values);
    EXPECT_EQ((QVector<values::Value>{qint64(1), qint64(2)}), write("INT*2", "[1,2]").values);
}

TEST(PlainWrite, TakesAnObjectWithAnId)
{
    const WriteRequest text = write("INT", R"({"id":"a-7","value":5})");
    EXPECT_EQ("", text.error);
    EXPECT_EQ("a-7", text.id);
    EXPECT_EQ(QVector<values::Value>{qint64(5)}, text.values);
    EXPECT_EQ("18446744073709551615", write("INT", R"({"value":5,"id":18446744073709551615})").id);
    EXPECT_EQ((QVector<values::Value>{qint64(1), qint64(2)}),
              write("INT*2", R"({"value":[1,2]})").values);
}

TEST(PlainWrite, KeepsTheIdOfAWriteThatIsRefused)
{
    const WriteRequest request = write("USINT", R"({"id":"a-7","value":300})");
    EXPECT_EQ("a-7", request.id);
    EXPECT_EQ("300 is outside the range of USINT, 0 to 255", request.error);
    EXPECT_TRUE(request.values.isEmpty());
}

struct BadWrite {
    const char* type;
    const char* json;
    const char* error;
};

const BadWrite kBadWrites[] = {
    {"INT", "null", "null is no value that can be written"},
    {"INT", R"({"value":null})", "null is no value that can be written"},
    {"INT", "{}", "there is no \"value\""},
    {"INT", R"({"id":"a"})", "there is no \"value\""},
    {"INT", R"({"value":1,"vlaue":2})", "\"vlaue\" is unknown; \"value\" and \"id\" are expected"},
    {"INT", R"({"value":1,"value":2})", "\"value\" stands twice"},
    {"INT", R"({"value":1,"id":1.5})",
     "an id is a whole number or a text of 100 characters at most"},
    {"INT", R"({"value":1,"id":["a"]})",
     "an id is a whole number or a text of 100 characters at most"},
    {"INT", "[1]", "one value is expected, no list"},
    {"INT*2", "1", "a list of 2 values is expected"},
    {"INT*2", "[1,2,3]", "2 values are expected, not 3"},
    {"INT*2", "[]", "2 values are expected, not 0"},
    {"INT", "\"5\"", "\"5\" is no value of INT, which takes a number"},
    {"BOOL", "1", "1 is no value of BOOL, which takes true or false"},
    {"REAL", "\"nan\"", "\"nan\" is no value of REAL, which takes a number"},
    {"STRING(2)", "\"abc\"", "\"'abc'\" has 3 characters and the STRING has room for 2"},
};

TEST(PlainWrite, IsRefusedWithItsReason)
{
    for (const BadWrite& bad : kBadWrites) {
        const WriteRequest request = write(bad.type, bad.json);
        EXPECT_EQ(bad.error, request.error) << bad.json;
        EXPECT_TRUE(request.values.isEmpty()) << bad.json;
    }
    EXPECT_NE("", write("INT", "on").error);
    EXPECT_NE("", write("INT", "").error);
    EXPECT_NE("", write("INT", R"({"value":1,"id":")" + QByteArray(101, 'x') + "\"}").error);
}

} // namespace
} // namespace plc::gateway
