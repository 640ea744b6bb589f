#include "panel/recipes/recipe_json.h"

#include <gtest/gtest.h>

#include "tests/panel/recipes/model_plc.h"
#include "tests/support/random.h"
#include "values/value_bits.h"

namespace plc::panel {
namespace {

using test::content;
using test::typeOf;
using values::Value;

const QString kFile = QStringLiteral("x.json");

Recipe example()
{
    Recipe recipe{QString::fromUtf8("Sömmer \"1\" %1"),
                  QStringLiteral("press"),
                  1795305600000,
                  QStringLiteral("anna"),
                  {}};
    recipe.entries = {
        {QStringLiteral("Plant.level"), content("REAL", {1.5F})},
        {QStringLiteral("Plant.name"), content("STRING(20)", {QStringLiteral("it's")})},
        {QStringLiteral("Plant.on"), content("BOOL", {true})},
        {QStringLiteral("Plant.n*2"), content("LINT*2", {qint64(-9007199254740993), qint64(7)})}};
    return recipe;
}

std::string errorOf(const char* json)
{
    const Expected<Recipe> recipe = parseRecipe(json, kFile);
    return recipe ? std::string() : recipe.error().text.toStdString();
}

TEST(RecipeJson, IsWrittenForPeople)
{
    EXPECT_EQ(
        "{\n"
        "  \"recipe\": 1,\n"
        "  \"name\": \"Sömmer \\\"1\\\" %1\",\n"
        "  \"plc\": \"press\",\n"
        "  \"savedAt\": 1795305600000,\n"
        "  \"savedBy\": \"anna\",\n"
        "  \"values\": [\n"
        "    {\"label\": \"Plant.level\", \"type\": \"REAL\", \"values\": [\"1.5\"]},\n"
        "    {\"label\": \"Plant.name\", \"type\": \"STRING(20)\", \"values\": [\"'it$'s'\"]},\n"
        "    {\"label\": \"Plant.on\", \"type\": \"BOOL\", \"values\": [\"TRUE\"]},\n"
        "    {\"label\": \"Plant.n*2\", \"type\": \"LINT*2\", \"values\": [\"-9007199254740993\", "
        "\"7\"]}\n"
        "  ]\n"
        "}\n",
        recipeJson(example()).toStdString());
}

TEST(RecipeJson, IsReadAsItWasWritten)
{
    const Recipe written = example();
    const Expected<Recipe> read = parseRecipe(recipeJson(written), kFile);
    ASSERT_TRUE(read) << read.error().text.toStdString();
    EXPECT_EQ(written.name, read->name);
    EXPECT_EQ(written.plc, read->plc);
    EXPECT_EQ(written.savedAt, read->savedAt);
    EXPECT_EQ(written.savedBy, read->savedBy);
    ASSERT_EQ(written.entries.size(), read->entries.size());
    for (int i = 0; i < int(written.entries.size()); ++i) {
        EXPECT_EQ(written.entries[i].label, read->entries[i].label);
        EXPECT_TRUE(isSameContent(written.entries[i].content, read->entries[i].content)) << i;
    }
}

/// Bits of any value of the type, each kind of NaN and -0.0 among them.
Value randomValue(const RecipeType& type, plc::test::Random* random)
{
    quint64 bits = (quint64(random->bits()) << 32) | random->bits();
    if (random->oneIn(4))
        bits |= 0x7ff000007f800000;
    if (!values::isText(*type.type))
        return values::valueOfBits(*type.type, bits);
    QString text;
    for (int i = random->below(type.stringLength + 1); i > 0; --i)
        text += QChar(ushort(1 + random->below(type.type->name[0] == 'W' ? 0xfffe : 0xfe)));
    return text;
}

TEST(RecipeJson, KeepsEveryBitOfEachType)
{
    plc::test::Random random(11);
    for (const values::IecType* type = values::iecTypes(); type->name; ++type) {
        for (int round = 0; round < 200; ++round) {
            RecipeType full{type, values::isText(*type) ? 12 : 0, 1};
            Recipe recipe = example();
            recipe.entries = {
                {QStringLiteral("x"), RecipeContent{full, {randomValue(full, &random)}}}};
            const Expected<Recipe> read = parseRecipe(recipeJson(recipe), kFile);
            ASSERT_TRUE(read) << recipeJson(recipe).toStdString()
                              << read.error().text.toStdString();
            ASSERT_TRUE(isSameContent(recipe.entries[0].content, read->entries[0].content))
                << recipeJson(recipe).toStdString();
        }
    }
}

/// The bits of the only value of a recipe that says so; 0 when it is refused.
quint64 bitsOf(const char* type, const char* text)
{
    const Expected<Recipe> recipe = parseRecipe(
        QByteArray(R"({"recipe":1,"name":"a","plc":"p","savedAt":1,"savedBy":"","values":)") +
            R"([{"label":"x","type":")" + type + R"(","values":[")" + text + R"("]}]})",
        kFile);
    return recipe ? values::valueBits(recipe->entries[0].content.values[0]) : 0;
}

TEST(RecipeJson, ANanKeepsItsBitsAndNothingElseIsGivenAsBits)
{
    EXPECT_EQ(0x7fc00001U, bitsOf("REAL", "NAN 16#7FC00001"));
    EXPECT_EQ(0xff800001U, bitsOf("REAL", "NAN 16#FF800001")) << "which signals";
    EXPECT_EQ(0x7ff0000000000001U, bitsOf("LREAL", "NAN 16#7FF0000000000001"));
    for (const char* const other :
         {"NAN 16#3F800000", "NAN 16#7F800000", "NAN 16#17FC00001", "NAN 16#7FC0001", "NAN 16#",
          "NAN 16#+FC00001", "NAN 16# 7FC0001", "NAN 16#7fc00001", "NAN 16#7FF8000000000001"})
        EXPECT_EQ(0U, bitsOf("REAL", other)) << other;
    for (const char* const other : {"NAN 16#7FC00001", "NAN 16#7FF0000000000000"})
        EXPECT_EQ(0U, bitsOf("LREAL", other)) << other;
    EXPECT_EQ(0U, bitsOf("DWORD", "NAN 16#7FC00001"));
}

TEST(RecipeJson, WhatIsWrongIsNamedWithItsPlace)
{
    EXPECT_NE("", errorOf("{"));
    EXPECT_NE(std::string::npos, errorOf("[]").find("x.json"));
    const char* const kHead =
        R"({"recipe":1,"name":"a","plc":"p","savedAt":1,"savedBy":"","values":[)";
    const auto entryError = [kHead](const char* entries) {
        return errorOf((QByteArray(kHead) + entries + "]}").constData());
    };
    EXPECT_EQ("", entryError(R"({"label":"x","type":"INT","values":["1"]})"));
    EXPECT_NE(std::string::npos,
              entryError(R"({"label":"x","type":"int","values":["1"]})").find("/values/0/type"));
    EXPECT_NE(
        std::string::npos,
        entryError(R"({"label":"x","type":"INT","values":["70000"]})").find("/values/0/values/0"));
    EXPECT_NE(std::string::npos, entryError(R"({"label":"x","type":"INT*2","values":["1"]})")
                                     .find("found 1 values, expected 2"));
    EXPECT_NE(std::string::npos, entryError(R"({"label":"x","type":"INT","values":["1"]},
                            {"label":"x","type":"INT","values":["1"]})")
                                     .find("the label stands twice"));
    EXPECT_NE(std::string::npos,
              errorOf(R"({"recipe":2,"name":"a","plc":"p","savedAt":1,"savedBy":"","values":[]})")
                  .find("/recipe"));
}

} // namespace
} // namespace plc::panel
