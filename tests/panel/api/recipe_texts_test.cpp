#include "panel/api/recipe_texts.h"

#include <gtest/gtest.h>

#include <cmath>

namespace plc::panel {
namespace {

RecipeContent content(const char* type, const QVector<values::Value>& values)
{
    return {*parseRecipeType(QString::fromLatin1(type)), values};
}

Recipe exampleRecipe()
{
    Recipe recipe{
        QStringLiteral("Summer"), QStringLiteral("press"), 1234, QStringLiteral("anna"), {}};
    recipe.entries = {{QStringLiteral("P.wide"), content("LINT", {qint64(9007199254740993)})},
                      {QStringLiteral("P.list[1]*2"), content("INT*2", {qint64(1), qint64(-2)})},
                      {QStringLiteral("P.exact"), content("LREAL", {std::nan("")})}};
    return recipe;
}

TEST(RecipeTexts, ValuesStandAsEverywhereInTheInterface)
{
    EXPECT_EQ(R"({"name":"Summer","plc":"press","savedAt":1234,"savedBy":"anna","values":[)"
              R"({"label":"P.wide","type":"LINT","saved":"9007199254740993"},)"
              R"({"label":"P.list[1]*2","type":"INT","saved":[1,-2]},)"
              R"({"label":"P.exact","type":"LREAL","saved":"nan"}]})"
              "\n",
              recipeText(exampleRecipe()).toStdString());
}

TEST(RecipeTexts, AComparisonTellsWhatIsNotKnown)
{
    Recipe recipe = exampleRecipe();
    recipe.entries.resize(2);
    const QVector<ComparedValue> values = {
        {QStringLiteral("P.wide"),
         recipe.entries[0].content,
         content("LINT", {qint64(5)}),
         false,
         {}},
        {QStringLiteral("P.list[1]*2"), recipe.entries[1].content, {}, {}, QStringLiteral("away")}};
    EXPECT_EQ(R"({"name":"Summer","plc":"press","savedAt":1234,"savedBy":"anna","values":[)"
              R"({"label":"P.wide","type":"LINT","saved":"9007199254740993","now":"5",)"
              R"("equal":false,"reason":""},)"
              R"({"label":"P.list[1]*2","type":"INT","saved":[1,-2],"now":null,"equal":null,)"
              R"("reason":"away"}]})"
              "\n",
              comparisonText(recipe, values).toStdString());
}

TEST(RecipeTexts, AReportCountsAndTellsEachValue)
{
    RestoredValue value;
    value.label = QStringLiteral("P.count");
    value.saved = content("INT", {qint64(1)});
    value.before = content("INT", {qint64(2)});
    value.outcome = RecipePlc::Outcome::Done;
    value.reason = QStringLiteral("could not be read back");
    const RestoreReport report{QStringLiteral("r1"),
                               QStringLiteral("Summer"),
                               QStringLiteral("press"),
                               {value},
                               1,
                               2,
                               3,
                               4};
    EXPECT_EQ(R"({"id":"r1","recipe":"Summer","plc":"press","written":1,"equal":2,)"
              R"("notWritten":3,"notKnown":4,"values":[)"
              R"({"label":"P.count","type":"INT","saved":1,"before":2,"after":null,)"
              R"("outcome":"done","reason":"could not be read back","equal":false,)"
              R"("verified":null}]})"
              "\n",
              reportText(report).toStdString());
}

TEST(RecipeTexts, AListNamesFilesThatCannotBeUsed)
{
    EXPECT_EQ(R"({"recipes":[{"name":"a","plc":"press","savedAt":1,"savedBy":"anna","values":2},)"
              R"({"name":"b","plc":"","savedAt":null,"savedBy":"","values":0,"error":"damaged"}]})"
              "\n",
              recipeListText(
                  {{QStringLiteral("a"), QStringLiteral("press"), 1, QStringLiteral("anna"), 2, {}},
                   {QStringLiteral("b"), {}, 0, {}, 0, QStringLiteral("damaged")}})
                  .toStdString());
}

} // namespace
} // namespace plc::panel
