#include "exchange/flat_json.h"

#include <gtest/gtest.h>

namespace plc::exchange {
namespace {

values::Value only(const char* json)
{
    const Expected<FlatJson> parsed = parseFlatJson(json);
    if (!parsed || !parsed->item || parsed->item->isList || parsed->item->values.size() != 1)
        return QStringLiteral("not a single value");
    return parsed->item->values.first();
}

QString errorOf(const QByteArray& json)
{
    const Expected<FlatJson> parsed = parseFlatJson(json);
    return parsed ? QStringLiteral("no error") : parsed.error().text;
}

TEST(FlatJson, KeepsAllDigitsOfIntegers)
{
    EXPECT_EQ(values::Value(std::numeric_limits<qint64>::min()), only("-9223372036854775808"));
    EXPECT_EQ(values::Value(std::numeric_limits<qint64>::max()), only("9223372036854775807"));
    EXPECT_EQ(values::Value(std::numeric_limits<quint64>::max()), only("18446744073709551615"));
}

TEST(FlatJson, RefusesIntegersOfMoreThan64Bits)
{
    EXPECT_NE("no error", errorOf("18446744073709551616"));
    EXPECT_NE("no error", errorOf("-9223372036854775809"));
}

TEST(FlatJson, RefusesFractionsThatNoDoubleHolds)
{
    EXPECT_NE("no error", errorOf("1e400"));
}

TEST(FlatJson, ReadsEachKindOfValue)
{
    EXPECT_EQ(values::Value(true), only("true"));
    EXPECT_EQ(values::Value(1.5), only(" 1.5 "));
    EXPECT_EQ(values::Value(QString::fromUtf8("Größe\n")), only("\"Gr\\u00f6ße\\n\""));
}

TEST(FlatJson, NullIsAnItemWithoutValues)
{
    const Expected<FlatJson> parsed = parseFlatJson("null");
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->item->values.isEmpty());
    EXPECT_FALSE(parsed->item->isList);
}

TEST(FlatJson, ReadsLists)
{
    const Expected<FlatJson> parsed = parseFlatJson("[1, -2, 3.5]");
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(parsed->item->isList);
    EXPECT_EQ((QVector<values::Value>{qint64(1), qint64(-2), 3.5}), parsed->item->values);
}

TEST(FlatJson, ReadsMembers)
{
    const Expected<FlatJson> parsed = parseFlatJson(R"({"value":[1,2],"id":"a7"})");
    ASSERT_TRUE(parsed);
    EXPECT_FALSE(parsed->item);
    ASSERT_NE(nullptr, parsed->member("value"));
    EXPECT_EQ((QVector<values::Value>{qint64(1), qint64(2)}), parsed->member("value")->values);
    EXPECT_EQ(values::Value(QStringLiteral("a7")), parsed->member("id")->values.first());
    EXPECT_EQ(nullptr, parsed->member("other"));
}

TEST(FlatJson, RefusesAKeyThatStandsTwice)
{
    EXPECT_EQ("\"value\" stands twice", errorOf(R"({"value":1,"value":2})"));
}

TEST(FlatJson, GivesATextOnlyWhereAMemberIsOne)
{
    const Expected<FlatJson> json =
        parseFlatJson(R"({"a":"x","number":1,"list":["x"],"none":null,"empty":""})");
    ASSERT_TRUE(json);
    ASSERT_TRUE(json->text("a"));
    EXPECT_EQ("x", json->text("a")->toStdString());
    ASSERT_TRUE(json->text("empty"));
    EXPECT_EQ("", json->text("empty")->toStdString());
    for (const char* other : {"number", "list", "none", "missing"})
        EXPECT_FALSE(json->text(other)) << other;
}

TEST(FlatJson, RefusesWhatIsNestedDeeper)
{
    EXPECT_EQ("lists and objects are nested too deeply", errorOf("[[1]]"));
    EXPECT_EQ("lists and objects are nested too deeply", errorOf(R"({"value":{"a":1}})"));
    EXPECT_NE("no error", errorOf(QByteArray(500000, '[')));
}

TEST(FlatJson, RefusesAnObjectOfManyMembers)
{
    QByteArray json = "{\"k\":0";
    for (int i = 0; i < 16; ++i)
        json += ",\"k" + QByteArray::number(i) + "\":0";
    EXPECT_EQ("an object has more than 16 members", errorOf(json + '}'));
}

TEST(FlatJson, RefusesWhatIsNoJsonAtAll)
{
    EXPECT_NE("no error", errorOf(""));
    EXPECT_NE("no error", errorOf("on"));
    EXPECT_NE("no error", errorOf("1 2"));
    EXPECT_NE("no error", errorOf("\"\xff\""));
    EXPECT_NE("no error", errorOf(QByteArray("1\0", 2)));
}

TEST(FlatJson, RefusesMoreThanAMebibyteUnread)
{
    EXPECT_EQ(values::Value(qint64(1)), only(QByteArray(1024 * 1024 - 1, ' ') + "1"));
    EXPECT_EQ("more than 1048576 bytes of JSON", errorOf(QByteArray(1024 * 1024, ' ') + "1"));
}

} // namespace
} // namespace plc::exchange
