#include "values/value_text.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/support/qt_printers.h"
#include "values/duration_text.h"
#include "values/string_literal.h"

namespace plc::values {
namespace test {
namespace {

const IecType& type(const char* name)
{
    const IecType* found = findIecType(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return *found;
}

constexpr int kStringLength = 10;

/// What parseValue() makes of a text, shown by valueText(); or the error behind "error: ".
QString reread(const char* typeName, const char* text)
{
    const Expected<Value> value =
        parseValue(type(typeName), kStringLength, QString::fromUtf8(text));
    return value ? valueText(type(typeName), *value)
                 : QStringLiteral("error: ") + value.error().text;
}

struct Row {
    const char* typeName;
    const char* text;
    const char* shown;
};

TEST(ValueText, IsReadAndShownInTheWayOfItsType)
{
    const Row rows[] = {{"BOOL", "TRUE", "TRUE"},
                        {"BOOL", "false", "FALSE"},
                        {"BIT", "1", "TRUE"},
                        {"BIT", "0", "FALSE"},
                        {"SINT", "-128", "-128"},
                        {"SINT", "127", "127"},
                        {"SINT", "+5", "5"},
                        {"USINT", "255", "255"},
                        {"BYTE", "255", "16#FF"},
                        {"BYTE", "16#a", "16#0A"},
                        {"BYTE", "2#1010_0101", "16#A5"},
                        {"BYTE", "8#17", "16#0F"},
                        {"BYTE", "0x7f", "16#7F"},
                        {"INT", "-32768", "-32768"},
                        {"INT", "32767", "32767"},
                        {"INT", "-16#10", "-16"},
                        {"UINT", "65535", "65535"},
                        {"WORD", "1", "16#0001"},
                        {"DINT", "-2147483648", "-2147483648"},
                        {"DINT", "2_147_483_647", "2147483647"},
                        {"UDINT", "4294967295", "4294967295"},
                        {"DWORD", "16#DEADBEEF", "16#DEADBEEF"},
                        {"LINT", "-9223372036854775808", "-9223372036854775808"},
                        {"LINT", "9223372036854775807", "9223372036854775807"},
                        {"ULINT", "18446744073709551615", "18446744073709551615"},
                        {"ULINT", "-0", "0"},
                        {"LWORD", "16#0123456789ABCDEF", "16#0123456789ABCDEF"},
                        {"REAL", "1.5", "1.5"},
                        {"REAL", "+0.1", "0.1"},
                        {"REAL", "16777216", "1.6777216e+07"},
                        {"REAL", "9999999", "9999999"},
                        {"REAL", "1e-5", "1e-05"},
                        {"REAL", "-3.4028235e38", "-3.4028235e+38"},
                        {"REAL", "-0", "-0"},
                        {"REAL", "REAL#inf", "REAL#inf"},
                        {"REAL", "real#-INF", "REAL#-inf"},
                        {"REAL", "REAL#nan", "REAL#nan"},
                        {"REAL", "REAL#+1.5", "1.5"},
                        {"LREAL", "LREAL#infinity", "LREAL#inf"},
                        {"LREAL", "LREAL#NaN", "LREAL#nan"},
                        {"LREAL", "0.1", "0.1"},
                        {"LREAL", "9007199254740993", "9.007199254740992e+15"},
                        {"LREAL", "123456789012345", "123456789012345"},
                        {"LREAL", "1.7976931348623157e308", "1.7976931348623157e+308"},
                        {"TIME", "T#1m30s", "T#1m30s"},
                        {"TIME", "time#90s", "T#1m30s"},
                        {"TIME", "t#49d17h2m47s295ms", "T#49d17h2m47s295ms"},
                        {"TIME", "T#0ms", "T#0s"},
                        {"TIME", "T#1s_500ms", "T#1s500ms"},
                        {"STRING", "pump", "'pump'"},
                        {"STRING", "'it$'s $$5'", "'it$'s $$5'"},
                        {"STRING", "", "''"},
                        {"STRING", "\xC3\xA9t\xC3\xA9", "'\xC3\xA9t\xC3\xA9'"},
                        {"STRING", "0123456789", "'0123456789'"},
                        {"WSTRING", "\xE2\x82\xAC 5", "\"\xE2\x82\xAC 5\""},
                        {"WSTRING", "\"a$0041b\"", "\"aAb\""}};
    for (const Row& row : rows)
        EXPECT_EQ(reread(row.typeName, row.text), QString::fromUtf8(row.shown))
            << row.typeName << ' ' << row.text;
}

TEST(ValueText, WhatIsNoNumberIsTakenOnlyWithItsType)
{
    for (const char* text : {"nan", "NaN", "inf", "-inf", "Infinity", "+INF", "-nan", "nan(1)"}) {
        EXPECT_THAT(reread("REAL", text).toStdString(), ::testing::HasSubstr("write REAL#"))
            << text;
        EXPECT_THAT(reread("LREAL", text).toStdString(), ::testing::HasSubstr("write LREAL#"))
            << text;
    }
    EXPECT_EQ("error: \"-inf\" is no number; write REAL#-inf if it is meant",
              reread("REAL", "-inf"));
    EXPECT_THAT(reread("REAL", "LREAL#nan").toStdString(),
                ::testing::HasSubstr("is no number such as"));
    EXPECT_THAT(reread("LREAL", "REAL#nan").toStdString(),
                ::testing::HasSubstr("is no number such as"));
    EXPECT_THAT(reread("REAL", "REAL#").toStdString(),
                ::testing::HasSubstr("is no number such as"));
}

TEST(ValueText, OutOfRangeOrForeignIsRefusedWithTheReason)
{
    const Row rows[] = {
        {"BOOL", "2", "error: \"2\" is no BOOL; TRUE, FALSE, 1 or 0 is expected"},
        {"SINT", "128", "error: 128 is outside the range of SINT, -128 to 127"},
        {"SINT", "-129", "error: -129 is outside the range of SINT, -128 to 127"},
        {"USINT", "-1", "error: -1 is outside the range of USINT, 0 to 255"},
        {"BYTE", "256", "error: 256 is outside the range of BYTE, 16#0 to 16#FF"},
        {"INT", "32768", "error: 32768 is outside the range of INT, -32768 to 32767"},
        {"UDINT", "4294967296", "error: 4294967296 is outside the range of UDINT, 0 to 4294967295"},
        {"LINT", "9223372036854775808",
         "error: 9223372036854775808 is outside the range of LINT, -9223372036854775808 to "
         "9223372036854775807"},
        {"LINT", "-9223372036854775809",
         "error: -9223372036854775809 is outside the range of LINT, -9223372036854775808 to "
         "9223372036854775807"},
        {"ULINT", "18446744073709551616",
         "error: 18446744073709551616 is outside the range of ULINT, 0 to 18446744073709551615"},
        {"INT", "1.5", "error: \"1.5\" is no whole number, which INT takes"},
        {"INT", "", "error: \"\" is no whole number, which INT takes"},
        {"INT", "1__0", "error: \"1__0\" is no whole number, which INT takes"},
        {"INT", "_1", "error: \"_1\" is no whole number, which INT takes"},
        {"INT", "--1", "error: \"--1\" is no whole number, which INT takes"},
        {"INT", "16#", "error: \"16#\" is no whole number, which INT takes"},
        {"INT", "16#-1", "error: \"16#-1\" is no whole number, which INT takes"},
        {"REAL", "1,5", "error: \"1,5\" is no number such as -1.5 or 2e6, which REAL takes"},
        {"REAL", "", "error: \"\" is no number such as -1.5 or 2e6, which REAL takes"},
        {"REAL", "1e39", "error: 1e39 cannot be held by REAL: too large or too near to 0"},
        {"LREAL", "1e309", "error: 1e309 cannot be held by LREAL: too large or too near to 0"},
        {"TIME", "90", "error: \"90\" is no duration such as T#1m30s or T#500ms, which TIME takes"},
        {"TIME", "T#50d", "error: T#50d is longer than TIME can hold, T#49d17h2m47s295ms"},
        {"STRING", "01234567890",
         "error: \"01234567890\" has 11 characters and the STRING has room for 10"},
        {"STRING", "\xE2\x82\xAC",
         "error: \"\xE2\x82\xAC\" has the character U+20ac, which a STRING cannot hold"},
        {"STRING", "'a$00b'",
         "error: \"'a$00b'\" has the character U+0000, which a STRING cannot hold"},
        {"STRING", "'a", "error: \"'a\" does not end with the quote it begins with"},
        {"STRING", "'a'b", "error: \"'a'b\" does not end with the quote it begins with"},
        {"STRING", "'$q'",
         "error: \"'$q'\" has an unknown escape behind $; $$ stands for the sign $"},
        {"STRING", "'$'", "error: \"'$'\" does not end with the quote it begins with"}};
    for (const Row& row : rows)
        EXPECT_EQ(reread(row.typeName, row.text), QString::fromUtf8(row.shown))
            << row.typeName << ' ' << row.text;
}

TEST(ValueText, BlanksAroundAreIgnoredButInTexts)
{
    EXPECT_EQ("5", reread("INT", " 5 "));
    EXPECT_EQ("TRUE", reread("BOOL", " true"));
    EXPECT_EQ("1.5", reread("REAL", "1.5 "));
    EXPECT_EQ("T#1s", reread("TIME", " T#1s "));
    EXPECT_EQ("' a '", reread("STRING", " a "));
}

TEST(ValueText, RealsAreReadDirectlyInTheirPrecision)
{
    // Halfway between two floats but for the last digit; by way of a double it would be rounded
    // twice, to the even neighbour.
    const Expected<Value> value =
        parseValue(type("REAL"), 0, QStringLiteral("1.00000017881393432617187499"));
    ASSERT_TRUE(value);
    EXPECT_EQ(1.00000011920928955078125f, std::get<float>(*value));
}

TEST(ValueText, EveryRealReadsBackAsItself)
{
    for (quint32 i = 0; i < 4000; ++i) {
        const quint32 bits = i * 1073741u;
        float number = 0;
        std::memcpy(&number, &bits, sizeof(number));
        if (!std::isfinite(number))
            continue;
        const QString text = valueText(type("REAL"), Value(number));
        const Expected<Value> back = parseValue(type("REAL"), 0, text);
        ASSERT_TRUE(back) << text.toStdString();
        ASSERT_EQ(std::get<float>(*back), number) << text.toStdString();
    }
}

TEST(ValueJson, KeepsAllDigitsAndStaysJson)
{
    EXPECT_EQ("true", valueJson(Value(true)));
    EXPECT_EQ("-9223372036854775808", valueJson(Value(qint64(-9223372036854775807LL - 1))));
    EXPECT_EQ("18446744073709551615", valueJson(Value(quint64(18446744073709551615ULL))));
    EXPECT_EQ("0.1", valueJson(Value(0.1f)));
    EXPECT_EQ("1e+300", valueJson(Value(1e300)));
    EXPECT_EQ("\"inf\"", valueJson(Value(std::numeric_limits<double>::infinity())));
    EXPECT_EQ("\"nan\"", valueJson(Value(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_EQ("\"a\\\"b\\\\c\\u000a\"", valueJson(Value(QStringLiteral("a\"b\\c\n"))));
}

// -0 is a whole number to many parsers, and those know one zero only.
TEST(ValueJson, KeepsTheSignOfZeroForParsersOfWholeNumbers)
{
    EXPECT_EQ("-0.0", valueJson(Value(-0.0f)));
    EXPECT_EQ("-0.0", valueJson(Value(-0.0)));
    EXPECT_EQ("0", valueJson(Value(0.0)));
}

TEST(DurationText, IsWholeMillisecondsOrNothing)
{
    EXPECT_EQ(1500u, parseDuration(QStringLiteral("T#1.5s")));
    EXPECT_EQ(1500u, parseDuration(QStringLiteral("T#1s_500ms")));
    EXPECT_EQ(93784005u, parseDuration(QStringLiteral("T#1d_2h_3m_4s_5ms")));
    EXPECT_EQ(1000u, parseDuration(QStringLiteral("T#1_000ms")));
    EXPECT_EQ(3600500u, parseDuration(QStringLiteral("T#1h_0.5s")));
    EXPECT_EQ(30000u, parseDuration(QStringLiteral("T#0.5m")));
    EXPECT_EQ(3u, parseDuration(QStringLiteral("T#0.00005m")));
    EXPECT_EQ(3600500u, parseDuration(QStringLiteral("T#1h0.5s")));
    EXPECT_EQ(1000u, parseDuration(QStringLiteral("T#1.000000000000s")));
    EXPECT_EQ(18446744073709551615ULL,
              parseDuration(QStringLiteral("T#213503982334d14h25m51s615ms")));
    for (const char* text : {"",
                             "T#",
                             "T#5",
                             "T#s",
                             "1s",
                             "T#1s1m",
                             "T#1s1s",
                             "T#1.5s1ms",
                             "T#1.2.3s",
                             "T#1s_",
                             "T#_1s",
                             "T#1s__5ms",
                             "T#1_s",
                             "T#1__0s",
                             "T#1s_ms",
                             "T#1._5s",
                             "T#1_.5s",
                             "T#0.0001s",
                             "T#-1s",
                             "T#1 s",
                             "T#1.s",
                             "T#.5s",
                             "T#1x",
                             "T#213503982334d14h25m51s616ms",
                             "T#99999999999999999999ms"}) {
        EXPECT_FALSE(parseDuration(QString::fromLatin1(text))) << text;
    }
}

TEST(StringLiteral, EscapesWhatCannotStandForItself)
{
    const QString text = QStringLiteral("a'b\"c$\n\r\t\f\x01");
    EXPECT_EQ("'a$'b\"c$$$L$R$T$P$01'", stringLiteral(text, QLatin1Char('\'')));
    EXPECT_EQ("\"a'b$\"c$$$L$R$T$P$0001\"", stringLiteral(text, QLatin1Char('"')));
    EXPECT_EQ(text, *parseStringLiteral(stringLiteral(text, QLatin1Char('\''))));
    EXPECT_EQ(text, *parseStringLiteral(stringLiteral(text, QLatin1Char('"'))));
}

} // namespace
} // namespace test
} // namespace plc::values
