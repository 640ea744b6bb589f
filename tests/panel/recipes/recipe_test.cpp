#include "panel/recipes/recipe.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/panel/recipes/model_plc.h"
#include "values/value_bits.h"

namespace plc::panel {
namespace {

using test::content;
using test::typeOf;

TEST(Recipe, TypesAreTexts)
{
    for (const char* text : {"BOOL", "REAL", "INT*3", "STRING(20)", "WSTRING(5)*2"}) {
        const std::optional<RecipeType> type = parseRecipeType(QString::fromLatin1(text));
        ASSERT_TRUE(type) << text;
        EXPECT_EQ(text, recipeTypeText(*type).toStdString());
    }
    EXPECT_EQ(20, typeOf("STRING(20)").stringLength);
    EXPECT_EQ(3, typeOf("INT*3").elements);
    for (const char* text : {"", "real", "STRING", "INT(3)", "INT*1", "INT*0", "INT*03", "FOO",
                             "REAL ", "INT*3\n", "STRING(99999999)"})
        EXPECT_FALSE(parseRecipeType(QString::fromLatin1(text))) << text;
}

TEST(Recipe, ContentsAreComparedBitByBit)
{
    EXPECT_TRUE(isSameContent(content("REAL", {1.5F}), content("REAL", {1.5F})));
    EXPECT_FALSE(isSameContent(content("REAL", {0.0F}), content("REAL", {-0.0F})));
    const values::Value nan = values::valueOfBits(*typeOf("REAL").type, 0x7fc00000);
    const values::Value otherNan = values::valueOfBits(*typeOf("REAL").type, 0x7fc00001);
    EXPECT_TRUE(isSameContent(content("REAL", {nan}), content("REAL", {nan})));
    EXPECT_FALSE(isSameContent(content("REAL", {nan}), content("REAL", {otherNan})));
    EXPECT_FALSE(isSameContent(content("INT*2", {qint64(1), qint64(2)}),
                               content("INT*2", {qint64(1), qint64(3)})));
    EXPECT_FALSE(isSameContent(content("INT", {qint64(1)}), content("DINT", {qint64(1)})));
    EXPECT_TRUE(isSameContent(content("STRING(5)", {QStringLiteral("ab")}),
                              content("STRING(5)", {QStringLiteral("ab")})));
    EXPECT_FALSE(isSameContent(content("STRING(5)", {QStringLiteral("ab")}),
                               content("STRING(5)", {QStringLiteral("aB")})));
}

TEST(Recipe, NamesAreShortAndCanBeShown)
{
    EXPECT_EQ("", recipeNameProblem(QString::fromUtf8("Größe 1/2 \"x\"")).toStdString());
    EXPECT_EQ("", recipeNameProblem(QStringLiteral("..")).toStdString());
    EXPECT_EQ("expected a name without blanks around it", recipeNameProblem({}).toStdString());
    EXPECT_NE("", recipeNameProblem(QStringLiteral(" a")).toStdString());
    EXPECT_EQ("", recipeNameProblem(QString(64, 'a')).toStdString());
    EXPECT_NE("", recipeNameProblem(QString(65, 'a')).toStdString());
    EXPECT_NE("", recipeNameProblem(QStringLiteral("a\nb")).toStdString());
    EXPECT_NE("", recipeNameProblem(QStringLiteral("a") + QChar(0xd800)).toStdString());
}

} // namespace
} // namespace plc::panel
