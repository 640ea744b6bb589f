#include "exchange/written_value.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/data_points.h"

namespace plc::exchange {
namespace {

using values::Value;

/// The value, or the error as a text.
Value written(const char* type, const Value& given)
{
    const Expected<Value> value = writtenValue(test::dataPoint(type), given);
    return value ? *value : Value(value.error().text);
}

QString errorOf(const char* type, const Value& given)
{
    const Expected<Value> value = writtenValue(test::dataPoint(type), given);
    return value ? QStringLiteral("no error") : value.error().text;
}

TEST(WrittenValue, IntegersReachTheLimitsOfTheirTypes)
{
    EXPECT_EQ(Value(qint64(-128)), written("SINT", qint64(-128)));
    EXPECT_EQ(Value(quint64(255)), written("USINT", qint64(255)));
    EXPECT_EQ(Value(qint64(-32768)), written("INT", qint64(-32768)));
    EXPECT_EQ(Value(quint64(65535)), written("WORD", quint64(65535)));
    EXPECT_EQ(Value(std::numeric_limits<qint64>::min()),
              written("LINT", std::numeric_limits<qint64>::min()));
    EXPECT_EQ(Value(std::numeric_limits<quint64>::max()),
              written("ULINT", std::numeric_limits<quint64>::max()));
}

TEST(WrittenValue, IntegersBeyondTheirTypeAreRefused)
{
    EXPECT_EQ("300 is outside the range of USINT, 0 to 255", errorOf("USINT", qint64(300)));
    EXPECT_EQ("-1 is outside the range of USINT, 0 to 255", errorOf("USINT", qint64(-1)));
    EXPECT_EQ("128 is outside the range of SINT, -128 to 127", errorOf("SINT", qint64(128)));
    EXPECT_EQ("-129 is outside the range of SINT, -128 to 127", errorOf("SINT", qint64(-129)));
    EXPECT_NE("no error", errorOf("LINT", quint64(9223372036854775808u)));
    EXPECT_NE("no error", errorOf("ULINT", qint64(-1)));
}

TEST(WrittenValue, AFractionIsNoInteger)
{
    EXPECT_EQ("\"1.5\" is no whole number, which INT takes", errorOf("INT", 1.5));
    EXPECT_EQ(Value(qint64(5)), written("INT", 5.0));
}

TEST(WrittenValue, TruthValuesAreTrueAndFalseOnly)
{
    EXPECT_EQ(Value(true), written("BOOL", true));
    EXPECT_EQ(Value(false), written("BIT", false));
    EXPECT_EQ("1 is no value of BOOL, which takes true or false", errorOf("BOOL", qint64(1)));
    EXPECT_EQ("\"true\" is no value of BOOL, which takes true or false",
              errorOf("BOOL", QStringLiteral("true")));
    EXPECT_EQ("true is no value of INT, which takes a number", errorOf("INT", true));
}

TEST(WrittenValue, RealsAreTakenFromAllNumbers)
{
    EXPECT_EQ(Value(0.1f), written("REAL", 0.1));
    EXPECT_EQ(Value(0.1f), written("REAL", 0.1f));
    EXPECT_EQ(Value(5.0f), written("REAL", qint64(5)));
    EXPECT_EQ(Value(0.1), written("LREAL", 0.1));
    EXPECT_EQ(Value(-7.0), written("LREAL", qint64(-7)));
}

TEST(WrittenValue, RealsBeyondTheirTypeAreRefused)
{
    EXPECT_NE("no error", errorOf("REAL", 1e39));
    EXPECT_NE("no error", errorOf("REAL", 1e-60));
}

TEST(WrittenValue, WhatIsNoNumberIsRefused)
{
    EXPECT_EQ("\"nan\" is no number", errorOf("REAL", std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ("\"inf\" is no number", errorOf("LREAL", std::numeric_limits<double>::infinity()));
    EXPECT_NE("no error", errorOf("INT", std::numeric_limits<double>::quiet_NaN()));
    EXPECT_NE("no error", errorOf("TIME", -std::numeric_limits<double>::infinity()));
}

TEST(WrittenValue, TimesAreMilliseconds)
{
    EXPECT_EQ(Value(quint64(90000)), written("TIME", qint64(90000)));
    EXPECT_EQ(Value(quint64(4294967295)), written("TIME", qint64(4294967295)));
    EXPECT_NE("no error", errorOf("TIME", qint64(4294967296)));
    EXPECT_NE("no error", errorOf("TIME", qint64(-1)));
    EXPECT_EQ("\"T#1s\" is no value of TIME, which takes a number of milliseconds",
              errorOf("TIME", QStringLiteral("T#1s")));
}

TEST(WrittenValue, TextsAreTakenAsTheyAre)
{
    EXPECT_EQ(Value(QStringLiteral("'a$N'")), written("STRING(10)", QStringLiteral("'a$N'")));
    EXPECT_EQ(Value(QString()), written("STRING(10)", QString()));
    EXPECT_EQ(Value(QString::fromUtf8("€")), written("WSTRING(1)", QString::fromUtf8("€")));
}

TEST(WrittenValue, TextsThatTheTypeCannotHoldAreRefused)
{
    EXPECT_EQ("\"'abcd'\" has 4 characters and the STRING has room for 3",
              errorOf("STRING(3)", QStringLiteral("abcd")));
    EXPECT_NE("no error", errorOf("STRING(3)", QString::fromUtf8("€")));
    EXPECT_NE("no error", errorOf("STRING(3)", QString(1, QChar(0))));
    EXPECT_EQ("5 is no value of STRING, which takes a text", errorOf("STRING(3)", qint64(5)));
    EXPECT_EQ("\"5\" is no value of INT, which takes a number",
              errorOf("INT", QStringLiteral("5")));
}

TEST(WrittenValues, AreAsManyAsTheElements)
{
    const Expected<QVector<Value>> three =
        writtenValues(test::dataPoint("INT*3"), {qint64(1), qint64(2), qint64(3)});
    ASSERT_TRUE(three);
    EXPECT_EQ((QVector<Value>{qint64(1), qint64(2), qint64(3)}), *three);
    const Expected<QVector<Value>> two =
        writtenValues(test::dataPoint("INT*3"), {qint64(1), qint64(2)});
    ASSERT_FALSE(two);
    EXPECT_EQ("3 values are expected, not 2", two.error().text);
}

TEST(WrittenValues, OneThatIsRefusedRefusesAll)
{
    EXPECT_FALSE(writtenValues(test::dataPoint("USINT*2"), {qint64(1), qint64(256)}));
}

TEST(WrittenValues, SeveralTextsAreNotWrittenAtOnce)
{
    const Expected<QVector<Value>> texts =
        writtenValues(test::dataPoint("STRING(3)*2"), {QStringLiteral("a"), QStringLiteral("b")});
    ASSERT_FALSE(texts);
    EXPECT_EQ("texts are written one by one, each by its own label", texts.error().text);
}

} // namespace
} // namespace plc::exchange
