#include <gtest/gtest.h>

#include "project/json_document.h"

namespace plc::project {
namespace {

JsonDocument documentOf(const QByteArray& json)
{
    Expected<JsonDocument> document = JsonDocument::parse(json);
    EXPECT_TRUE(document.hasValue()) << json.toStdString();
    return document ? std::move(*document) : std::move(*JsonDocument::parse("[]"));
}

std::string parseErrorOf(const QByteArray& json)
{
    const Expected<JsonDocument> document = JsonDocument::parse(json);
    return document ? "" : document.error().text.toStdString();
}

double numberOf(const QByteArray& json)
{
    return documentOf("[" + json + "]").root().first().number();
}

QString textOf(const QByteArray& json)
{
    return documentOf("[\"" + json + "\"]").root().first().text();
}

TEST(JsonDocument, GivesValuesOfEveryType)
{
    const JsonDocument document =
        documentOf(R"({"text": "a\u00e4\n", "number": -1.5, "yes": true, "no": false,
                       "null": null, "list": [1, [2], {}], "object": {"a": 1}})");
    const JsonValue root = document.root();
    EXPECT_EQ(QString::fromUtf8("a\xc3\xa4\n"), root.member("text").text());
    EXPECT_EQ(-1.5, root.member("number").number());
    EXPECT_TRUE(root.member("yes").boolean());
    EXPECT_EQ(JsonValue::Type::Boolean, root.member("no").type());
    EXPECT_FALSE(root.member("no").boolean());
    EXPECT_EQ(JsonValue::Type::Null, root.member("null").type());
    EXPECT_TRUE(root.member("list").isList());
    EXPECT_EQ(1, root.member("object").member("a").number());
    EXPECT_EQ(JsonValue::Type::Missing, root.member("nothing").type());
    EXPECT_EQ(JsonValue::Type::Missing, root.member("text").member("a").type());
}

TEST(JsonDocument, WalksOverListsAndKeys)
{
    const JsonDocument document = documentOf(R"({"a": [[1, 2], 3, {"x": 4}], "b": {}, "c": []})");
    std::vector<std::string> keys;
    const JsonValue root = document.root();
    for (JsonValue key = root.first(); key != root.end(); key = key.nextKey())
        keys.push_back(key.text().toStdString());
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), keys);
    const JsonValue list = root.member("a");
    EXPECT_EQ(3, list.first().next().number());
    EXPECT_EQ(4, list.first().next().next().member("x").number());
    EXPECT_TRUE(list.first().next().next().next() == list.end());
    EXPECT_TRUE(root.member("b").first() == root.member("b").end());
    EXPECT_TRUE(root.member("c").first() == root.member("c").end());
}

TEST(JsonDocument, TellsTheWayToAValue)
{
    const JsonDocument document =
        documentOf(R"({"plain": [0, {"a/b~c": [true, "here"]}], "behind": 1})");
    const JsonValue list = document.root().member("plain").first().next().member("a/b~c");
    EXPECT_EQ("", document.root().path().toStdString());
    EXPECT_EQ("/plain/1/a~1b~0c", list.path().toStdString());
    EXPECT_EQ("/plain/1/a~1b~0c/1", list.first().next().path().toStdString());
    EXPECT_EQ("/behind", document.root().member("behind").path().toStdString());
    EXPECT_EQ("", JsonValue().path().toStdString());
}

TEST(JsonDocument, ReadsIntegersOfAnyLength)
{
    EXPECT_EQ(9223372036854775807.0, numberOf("9223372036854775807"));
    EXPECT_EQ(18446744073709551615.0, numberOf("18446744073709551615"));
    EXPECT_EQ(18446744073709551616.0, numberOf("18446744073709551616"));
    EXPECT_EQ(-9223372036854775809.0, numberOf("-9223372036854775809"));
    EXPECT_EQ(1e29, numberOf("100000000000000000000000000000"));
}

TEST(JsonDocument, ReadsWhatOtherWritersMakeOfNumbersAndTexts)
{
    EXPECT_EQ(1.0, numberOf("1."));
    EXPECT_EQ(QStringLiteral("a\tb\nc"), textOf("a\tb\nc"));
    EXPECT_EQ(1, documentOf("\xef\xbb\xbf{\"a\": 1}").root().member("a").number());
}

TEST(JsonDocument, KeepsHalvesOfSurrogatePairs)
{
    const QChar high(ushort(0xd83d));
    const QChar low(ushort(0xde00));
    EXPECT_EQ(QString(high), textOf("\\ud83d"));
    EXPECT_EQ(QString(low), textOf("\\ude00"));
    EXPECT_EQ(QStringLiteral("a") + low + high + QStringLiteral("b"), textOf("a\\ude00\\ud83db"));
    EXPECT_EQ(QString(high) + high + low + low, textOf("\\ud83d\\ud83d\\ude00\\ude00"));
    EXPECT_EQ(QString(high) + low, textOf("\xf0\x9f\x98\x80"));
}

TEST(JsonDocument, KeepsEveryKindOfValueBesideWhatOnlyTheSlowerParserReads)
{
    const JsonDocument document = documentOf(
        R"({"half": "\ud800", "list": [1.5, true, false, null, [], {"k": "v"}], "last": -2})");
    const JsonValue list = document.root().member("list");
    EXPECT_EQ(1.5, list.first().number());
    EXPECT_TRUE(list.first().next().boolean());
    EXPECT_EQ(JsonValue::Type::Null, list.first().next().next().next().type());
    EXPECT_EQ("v", list.first().next().next().next().next().next().member("k").text());
    EXPECT_EQ("/list/5/k", list.first().next().next().next().next().next().member("k").path());
    EXPECT_EQ(-2, document.root().member("last").number());
}

TEST(JsonDocument, HoldsContainers1024DeepAndNoDeeper)
{
    EXPECT_EQ("", parseErrorOf(QByteArray(1024, '[') + QByteArray(1024, ']')));
    EXPECT_NE("", parseErrorOf(QByteArray(1025, '[') + QByteArray(1025, ']')));
}

TEST(JsonDocument, IsAnObjectOrAList)
{
    EXPECT_EQ("", parseErrorOf("[]"));
    EXPECT_EQ("", parseErrorOf(" {} "));
    for (const char* json : {"", " ", "1", "\"text\"", "null", "[1] 2", "{\"a\"}", "[\"\xff\"]"})
        EXPECT_NE(std::string::npos, parseErrorOf(json).find("not JSON")) << json;
}

TEST(JsonDocument, FindsAKeyRepeatedAmongMany)
{
    QByteArray json = "{";
    for (int i = 0; i < 40; ++i)
        json += "\"key" + QByteArray::number(i) + "\": 0, ";
    EXPECT_EQ("", parseErrorOf(json + "\"key40\": 0}"));
    EXPECT_NE(
        std::string::npos,
        parseErrorOf(json + "\"key39\": 0}").find("key \"key39\" stands twice in one object"));
    EXPECT_NE(std::string::npos,
              parseErrorOf("[{}, [{\"a\": {\"b\": 1, \"b\": 2}}]]").find("\"b\" stands twice"));
}

TEST(JsonDocument, OfOthersIsNothingButJson)
{
    EXPECT_TRUE(JsonDocument::parseStrictly(R"({"a": [1, {"b": "c"}]})"));
    for (const char* json : {"", "{", "[1.]", "{\"a\": \"\x01\"}", "nonsense"}) {
        const Expected<JsonDocument> parsed = JsonDocument::parseStrictly(json);
        ASSERT_FALSE(parsed) << json;
        EXPECT_EQ("not JSON", parsed.error().text.toStdString());
    }
    const Expected<JsonDocument> twice = JsonDocument::parseStrictly(R"([{"a": 1, "a": 2}])");
    ASSERT_FALSE(twice);
    EXPECT_EQ("a key stands twice in one object", twice.error().text.toStdString());
}

} // namespace
} // namespace plc::project
