#include "panel/api/json_text.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/points/value_codec.h"
#include "support/data_points.h"

namespace plc::panel {
namespace {

using plc::test::dataPoint;
using values::Value;

/// From the bytes that a PLC's value has.
std::string shown(const char* type, const QByteArray& hex)
{
    QByteArray json;
    appendValue(dataPoint(type), QByteArray::fromHex(hex), &json);
    return json.toStdString();
}

std::string taken(const char* type, const QVector<Value>& given)
{
    const host::DataPoint point = dataPoint(type);
    const auto values = valuesOfClient(point, given);
    return values ? valueText(point, *values).toStdString()
                  : "error: " + values.error().text.toStdString();
}

TEST(ValueJson, OfEachKindOfTypeIsExact)
{
    // The least significant byte comes first.
    EXPECT_EQ("true", shown("BOOL", "01"));
    EXPECT_EQ("-2", shown("INT", "feff"));
    EXPECT_EQ("65535", shown("WORD", "ffff"));
    EXPECT_EQ("4294967295", shown("UDINT", "ffffffff"));
    EXPECT_EQ("-1.5", shown("REAL", "0000c0bf"));
    EXPECT_EQ("90000", shown("TIME", "905f0100"));
    EXPECT_EQ("[1,2,3]", shown("INT*3", "010002000300"));
    EXPECT_EQ("null", shown("INT", ""));
}

TEST(ValueJson, OfAZeroKeepsItsSignForParsersOfWholeNumbers)
{
    EXPECT_EQ("-0.0", shown("REAL", "00000080"));
    EXPECT_EQ("-0.0", shown("LREAL", "0000000000000080"));
    EXPECT_EQ("0", shown("REAL", "00000000"));
    EXPECT_EQ("-0.0", taken("REAL", {Value(-0.0)}));
}

TEST(ValueJson, OfSixtyFourBitsIsATextOfDigits)
{
    EXPECT_EQ("\"9007199254740993\"", shown("LINT", "0100000000002000"));
    EXPECT_EQ("\"-1\"", shown("LINT", "ffffffffffffffff"));
    EXPECT_EQ("\"18446744073709551615\"", shown("ULINT", "ffffffffffffffff"));
    EXPECT_EQ("\"18446744073709551615\"", shown("LWORD", "ffffffffffffffff"));
    EXPECT_EQ("[\"1\",\"2\"]", shown("LINT*2", "01000000000000000200000000000000"));
}

TEST(ValueJson, OfNoNumberIsAWord)
{
    EXPECT_EQ("\"nan\"", shown("REAL", "0000c07f"));
    EXPECT_EQ("\"nan\"", shown("REAL", "0000c0ff")) << "whatever its sign";
    EXPECT_EQ("\"inf\"", shown("REAL", "0000807f"));
    EXPECT_EQ("\"-inf\"", shown("LREAL", "000000000000f0ff"));
}

TEST(ValueJson, OfATextIsEscaped)
{
    EXPECT_EQ(R"("a\"b")", shown("STRING(5)", "612262"));
    QByteArray json;
    appendText(QStringLiteral("line\n\\ \u00e9"), &json);
    EXPECT_EQ("\"line\\u000a\\\\ \u00e9\"", json.toStdString());
}

TEST(ClientValues, OfSixtyFourBitsMayBeTextsOfDigits)
{
    EXPECT_EQ("\"18446744073709551615\"", taken("ULINT", {QStringLiteral("18446744073709551615")}));
    EXPECT_EQ("\"-5\"", taken("LINT", {qint64(-5)}));
    EXPECT_EQ(0u, taken("ULINT", {QStringLiteral("-1")}).find("error: "));
    EXPECT_EQ(0u, taken("LINT", {QStringLiteral("x")}).find("error: "));
    EXPECT_EQ(0u, taken("INT", {QStringLiteral("5")}).find("error: ")) << "no text elsewhere";
}

TEST(ClientValues, AreInTheRangeOfTheType)
{
    EXPECT_EQ("-32768", taken("INT", {qint64(-32768)}));
    EXPECT_EQ(0u, taken("INT", {qint64(32768)}).find("error: "));
    EXPECT_EQ(0u, taken("INT*2", {qint64(1)}).find("error: "));
    EXPECT_EQ("[1,2]", taken("INT*2", {qint64(1), qint64(2)}));
}

TEST(JsonMembers, AreSeparated)
{
    QByteArray json = "{";
    appendMember("a", qint64(1), &json);
    appendMember("b", QStringLiteral("x"), &json);
    appendKey("c", &json);
    appendTime(0, &json);
    EXPECT_EQ(R"({"a":1,"b":"x","c":null)", json.toStdString());
}

TEST(JsonMembers, MayBeTrueFalseOrNotKnown)
{
    QByteArray json = "{";
    appendTruth("a", true, &json);
    appendTruth("b", false, &json);
    appendTruth("c", std::nullopt, &json);
    EXPECT_EQ(R"({"a":true,"b":false,"c":null)", json.toStdString());
}

} // namespace
} // namespace plc::panel
