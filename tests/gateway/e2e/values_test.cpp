// Every value as it lies in the PLC's memory, at a consumer.

#include "gateway/e2e/gateway_trial.h"

namespace plc::test {
namespace {

constexpr char kTypesProject[] = R"({
  'name': 'Types',
  'areas': [{'index': 0, 'size': 64}, {'index': 3, 'size': 4096}],
  'scopes': [{'name': 'T', 'variables': [
    {'name': 'bool', 'type': 'BOOL', 'area': 3, 'offset': 0},
    {'name': 'byte', 'type': 'BYTE', 'area': 3, 'offset': 1},
    {'name': 'sint', 'type': 'SINT', 'area': 3, 'offset': 2},
    {'name': 'usint', 'type': 'USINT', 'area': 3, 'offset': 3},
    {'name': 'int', 'type': 'INT', 'area': 3, 'offset': 4},
    {'name': 'uint', 'type': 'UINT', 'area': 3, 'offset': 6},
    {'name': 'word', 'type': 'WORD', 'area': 3, 'offset': 8},
    {'name': 'dint', 'type': 'DINT', 'area': 3, 'offset': 12},
    {'name': 'udint', 'type': 'UDINT', 'area': 3, 'offset': 16},
    {'name': 'real', 'type': 'REAL', 'area': 3, 'offset': 20},
    {'name': 'dword', 'type': 'DWORD', 'area': 3, 'offset': 24},
    {'name': 'time', 'type': 'TIME', 'area': 3, 'offset': 28},
    {'name': 'lreal', 'type': 'LREAL', 'area': 3, 'offset': 32},
    {'name': 'lint', 'type': 'LINT', 'area': 3, 'offset': 40},
    {'name': 'ulint', 'type': 'ULINT', 'area': 3, 'offset': 48},
    {'name': 'lword', 'type': 'LWORD', 'area': 3, 'offset': 56},
    {'name': 'string', 'type': 'STRING', 'length': 11, 'area': 3, 'offset': 64},
    {'name': 'wstring', 'type': 'WSTRING', 'length': 12, 'area': 3, 'offset': 80},
    {'name': 'größe', 'type': 'INT', 'area': 3, 'offset': 108},
    {'name': 'row', 'type': 'INT', 'area': 3, 'offset': 112, 'array': [[0, 2]]},
    {'name': 'wide', 'type': 'LINT', 'area': 3, 'offset': 120, 'array': [[1, 2]]},
    {'name': 'curve', 'type': 'REAL', 'area': 3, 'offset': 140, 'array': [[1, 2]]},
    {'name': 'names', 'type': 'STRING', 'length': 20, 'area': 3, 'offset': 400, 'array': [[1, 2]]},
    {'name': 'lamp', 'type': 'BIT', 'area': 0, 'offset': 35},
    {'name': 'lamps', 'type': 'BIT', 'area': 0, 'offset': 64, 'array': [[0, 9]]}]}],
  'cyclic': ['T.bool', 'T.byte', 'T.sint', 'T.usint', 'T.int', 'T.uint', 'T.word', 'T.dint',
    'T.udint', 'T.real', 'T.dword', 'T.time', 'T.lreal', 'T.lint', 'T.ulint', 'T.lword',
    'T.string', 'T.wstring', 'T.größe', {'label': 'T.row[0]', 'elements': 3},
    {'label': 'T.wide[1]', 'elements': 2}, {'label': 'T.curve[1]', 'elements': 2},
    {'label': 'T.names[1]', 'elements': 2}, 'T.lamp', {'label': 'T.lamps[0]', 'elements': 10}]})";

struct Case {
    const char* label;
    const char* text; ///< As the PLC is given it and tells it.
    const char* name;
    const char* type;
    const char* json; ///< As the consumer tells it, whole numbers of 64 bits as texts.
};

/// Of each type the ends of its range, in two steps: in the births, and then as changes.
const Case kLows[] = {
    {"T.bool", "TRUE", "T/bool", "Boolean", "true"},
    {"T.byte", "16#80", "T/byte", "UInt8", "128"},
    {"T.sint", "-128", "T/sint", "Int8", "-128"},
    {"T.usint", "0", "T/usint", "UInt8", "0"},
    {"T.int", "-32768", "T/int", "Int16", "-32768"},
    {"T.uint", "0", "T/uint", "UInt16", "0"},
    {"T.word", "16#8000", "T/word", "UInt16", "32768"},
    {"T.dint", "-2147483648", "T/dint", "Int32", "-2147483648"},
    {"T.udint", "2147483648", "T/udint", "UInt32", "2147483648"},
    {"T.real", "-0.5", "T/real", "Float", "-0.5"},
    {"T.dword", "16#80000000", "T/dword", "UInt32", "2147483648"},
    {"T.time", "T#1m30s", "T/time", "UInt32", "90000"},
    {"T.lreal", "-1.7976931348623157e+308", "T/lreal", "Double", "-1.7976931348623157e+308"},
    {"T.lint", "-9223372036854775808", "T/lint", "Int64", "\"-9223372036854775808\""},
    {"T.ulint", "9223372036854775808", "T/ulint", "UInt64", "\"9223372036854775808\""},
    {"T.lword", "16#8000000000000000", "T/lword", "UInt64", "\"9223372036854775808\""},
    {"T.string", "'Öl 30 °'", "T/string", "String", "\"Öl 30 °\""},
    {"T.wstring", R"("日本 🔥 é")", "T/wstring", "String", "\"日本 🔥 é\""},
    {"T.größe", "-1", "T/größe", "Int16", "-1"},
    {"T.lamp", "TRUE", "T/lamp", "Boolean", "true"},
};
const Case kHighs[] = {
    {"T.bool", "FALSE", "T/bool", "Boolean", "false"},
    {"T.byte", "16#FF", "T/byte", "UInt8", "255"},
    {"T.sint", "127", "T/sint", "Int8", "127"},
    {"T.usint", "255", "T/usint", "UInt8", "255"},
    {"T.int", "32767", "T/int", "Int16", "32767"},
    {"T.uint", "65535", "T/uint", "UInt16", "65535"},
    {"T.word", "16#FFFF", "T/word", "UInt16", "65535"},
    {"T.dint", "2147483647", "T/dint", "Int32", "2147483647"},
    {"T.udint", "4294967295", "T/udint", "UInt32", "4294967295"},
    {"T.real", "3.4028235e+38", "T/real", "Float", "3.4028234663852886e+38"},
    {"T.dword", "16#FFFFFFFF", "T/dword", "UInt32", "4294967295"},
    {"T.time", "T#49d17h2m47s295ms", "T/time", "UInt32", "4294967295"},
    {"T.lreal", "5e-324", "T/lreal", "Double", "5e-324"},
    {"T.lint", "9223372036854775807", "T/lint", "Int64", "\"9223372036854775807\""},
    {"T.ulint", "18446744073709551615", "T/ulint", "UInt64", "\"18446744073709551615\""},
    {"T.lword", "16#FFFFFFFFFFFFFFFF", "T/lword", "UInt64", "\"18446744073709551615\""},
    {"T.string", "'12345678901'", "T/string", "String", "\"12345678901\""},
    {"T.wstring", R"("")", "T/wstring", "String", "\"\""},
    {"T.größe", "1", "T/größe", "Int16", "1"},
    {"T.lamp", "FALSE", "T/lamp", "Boolean", "false"},
};

/// Arrays: the bytes in the PLC, and the whole of them at the consumer.
struct ArrayCase {
    const char* poke;
    const char* name;
    const char* type;
    const char* json;
};
const ArrayCase kArrays[] = {
    {"3 112 80007FFFFFFF", "T/row/0..2", "Int16Array", "[-32768,32767,-1]"},
    {"3 120 80000000000000007FFFFFFFFFFFFFFF", "T/wide/1..2", "Int64Array",
     R"(["-9223372036854775808","9223372036854775807"])"},
    {"3 140 BF0000003E800000", "T/curve/1..2", "FloatArray", "[-0.5,0.25]"},
    {"3 400 D66C00", "T/names/1..2", "StringArray", "[\"Öl\",\"\"]"},
    {"0 4 02010001", "T/lamps/0..9", "BooleanArray",
     "[true,false,false,false,false,false,false,false,false,true]"},
};

/// A number as JSON writes it, which may be longer than the shortest text that means it.
QJsonValue parsed(const char* json)
{
    return QJsonDocument::fromJson(QByteArray("[") + json + "]").array().first();
}

class GatewayValues : public GatewayTrial {
protected:
    void SetUp() override
    {
        GatewayTrial::SetUp();
        if (!IsSkipped())
            site.addPlc("types", kTypesProject);
    }
    template <size_t Count>
    void setAll(const Case (&cases)[Count])
    {
        for (const Case& each : cases) {
            const QString label = QString::fromUtf8(each.label);
            const QString text = QString::fromUtf8(each.text);
            EXPECT_EQ("", plc().command(QStringLiteral("set %1 %2").arg(label, text)));
            EXPECT_EQ(each.text, plc().command(QStringLiteral("get %1").arg(label)).toStdString());
        }
    }
    PlcProcess& plc() { return site.plc("types"); }
    /// Reads messages until each of these values has come.
    template <size_t Count>
    static void awaitAll(Watcher* consumer, const Case (&cases)[Count])
    {
        for (const Case& each : cases) {
            const auto isIn = [&](const QJsonObject& message) {
                return metric(message, each.name)[QStringLiteral("value")] == parsed(each.json);
            };
            const auto& all = consumer->messages();
            const bool hasCome =
                std::any_of(all.begin(), all.end(), isIn) || !consumer->await(isIn).isEmpty();
            EXPECT_TRUE(hasCome) << each.name;
        }
    }
};

TEST_P(GatewayValues, AreInTheBirthWithTheirTypes)
{
    setAll(kLows);
    for (const ArrayCase& each : kArrays)
        EXPECT_EQ("", plc().command(QStringLiteral("poke ") + QLatin1String(each.poke)));
    const auto consumer = watcher();
    site.start();
    const QJsonObject birth = consumer->await("DBIRTH", "types");
    for (const Case& each : kLows) {
        EXPECT_EQ(parsed(each.json), metric(birth, each.name)[QStringLiteral("value")])
            << each.name;
        EXPECT_EQ(each.type, metric(birth, each.name)[QStringLiteral("type")].toString());
    }
    for (const ArrayCase& each : kArrays) {
        EXPECT_EQ(parsed(each.json), metric(birth, each.name)[QStringLiteral("value")])
            << each.name << jsonOf(metric(birth, each.name)).toStdString();
        EXPECT_EQ(each.type, metric(birth, each.name)[QStringLiteral("type")].toString());
    }
    // 25 of the PLC, and how writes end.
    EXPECT_EQ(26, birth[QStringLiteral("metrics")].toArray().size());
}

TEST_P(GatewayValues, ComeAsChanges)
{
    setAll(kLows);
    const auto consumer = watcher();
    site.start();
    consumer->await("DBIRTH", "types");
    setAll(kHighs);
    awaitAll(consumer.get(), kHighs);
    setAll(kLows);
    awaitAll(consumer.get(), kLows);
    for (const ArrayCase& each : kArrays) {
        EXPECT_EQ("", plc().command(QStringLiteral("poke ") + QLatin1String(each.poke)));
        EXPECT_FALSE(consumer->awaitValue("DDATA", "types", each.name, parsed(each.json)).isEmpty())
            << each.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Mqtt, GatewayValues, bothVersions(), versionName);

} // namespace
} // namespace plc::test
