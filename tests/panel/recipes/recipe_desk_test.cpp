#include "panel/recipes/recipe_desk.h"

#include <gtest/gtest.h>

#include "tests/panel/recipes/model_plc.h"
#include "tests/support/file_test.h"

namespace plc::panel {
namespace {

using test::content;
using test::integer;
using test::letters;
using test::ModelPlc;

class RecipeDeskTest : public plc::test::FileTest {
protected:
    RecipeDeskTest()
    {
        plc->values[QStringLiteral("a")] = integer(1);
        plc->values[QStringLiteral("b")] = integer(2);
    }
    /// "" or the failure's kind and text.
    template <typename T>
    static std::string failure(const RecipeResult<T>& result)
    {
        const auto* found = std::get_if<RecipeFailure>(&result);
        return found ? std::to_string(found->kind) + " " + found->text.toStdString() : "";
    }
    std::string save(const QStringList& labels)
    {
        std::string outcome = "not settled";
        desk.save({QStringLiteral("Summer"), QStringLiteral("press"), labels,
                   QStringLiteral("anna"), 1234},
                  plc, [&outcome](const RecipeResult<Recipe>& saved) { outcome = failure(saved); });
        plc->settle();
        return outcome;
    }
    /// The outcome, "" for a report.
    void restore(const char* id, const Recipe& recipe, std::string* outcome)
    {
        *outcome = "not settled";
        desk.restore(QString::fromLatin1(id), recipe, plc,
                     [outcome](const RecipeResult<RestoreReport>& report) {
                         *outcome = failure(report);
                         if (outcome->empty())
                             *outcome = std::to_string(std::get<RestoreReport>(report).written);
                     });
    }
    Recipe named(const char* name, const char* plcName)
    {
        Recipe recipe = letters(2);
        recipe.name = QString::fromLatin1(name);
        recipe.plc = QString::fromLatin1(plcName);
        return recipe;
    }
    int writes() const { return int(plc->log.filter(QStringLiteral("write")).size()); }

    RecipeDesk desk{path("recipes")};
    std::shared_ptr<ModelPlc> plc = std::make_shared<ModelPlc>();
};

TEST_F(RecipeDeskTest, SavesWhatThePlcHasNow)
{
    EXPECT_EQ("", save({QStringLiteral("b"), QStringLiteral("a")}));
    const RecipeResult<Recipe> found = desk.find(QStringLiteral("Summer"));
    ASSERT_EQ("", failure(found));
    const auto& recipe = std::get<Recipe>(found);
    EXPECT_EQ("press", recipe.plc.toStdString());
    EXPECT_EQ("anna", recipe.savedBy.toStdString());
    EXPECT_EQ(1234, recipe.savedAt);
    ASSERT_EQ(2, recipe.entries.size());
    EXPECT_EQ("b", recipe.entries[0].label.toStdString());
    EXPECT_TRUE(isSameContent(integer(2), recipe.entries[0].content));
}

TEST_F(RecipeDeskTest, SavesNothingWhenOneValueCannotBeRead)
{
    EXPECT_EQ("", save({QStringLiteral("a")}));
    EXPECT_EQ("3 x: the PLC refuses it (and 1 more); nothing was saved",
              save({QStringLiteral("a"), QStringLiteral("x"), QStringLiteral("y")}));
    EXPECT_EQ(1, std::get<Recipe>(desk.find(QStringLiteral("Summer"))).entries.size())
        << "the old one stays";
}

TEST_F(RecipeDeskTest, WhatMakesNoSenseIsNotAsked)
{
    EXPECT_EQ("0 expected labels of values", save({}));
    EXPECT_EQ("0 a stands twice", save({QStringLiteral("a"), QStringLiteral("a")}));
    EXPECT_TRUE(plc->log.isEmpty());
    EXPECT_EQ("1 there is no recipe of that name", failure(desk.find(QStringLiteral("x"))));
    EXPECT_EQ("1 there is no recipe of that name", failure(desk.remove(QStringLiteral("../x"))));
}

TEST_F(RecipeDeskTest, ComparesWithWhatThePlcHasNow)
{
    Recipe recipe = letters(4);
    plc->values[QStringLiteral("b")] = integer(7);
    plc->values[QStringLiteral("d")] = content("DINT", {qint64(4)});
    QVector<ComparedValue> values;
    RecipeDesk::compare(recipe, plc, [&values](const RecipeResult<QVector<ComparedValue>>& found) {
        values = std::get<QVector<ComparedValue>>(found);
    });
    plc->settle();
    ASSERT_EQ(4, values.size());
    EXPECT_EQ(true, values[0].isEqual);
    EXPECT_EQ(false, values[1].isEqual);
    EXPECT_TRUE(isSameContent(integer(7), *values[1].now));
    EXPECT_FALSE(values[2].isEqual) << "not known";
    EXPECT_EQ("the PLC refuses it", values[2].reason.toStdString());
    EXPECT_EQ(false, values[3].isEqual);
    EXPECT_EQ("the value is DINT now and was INT when it was saved",
              values[3].reason.toStdString());
}

TEST_F(RecipeDeskTest, TheSameIdRestoresOnce)
{
    plc->values[QStringLiteral("a")] = integer(9);
    std::string first;
    std::string meanwhile;
    std::string later;
    restore("1", letters(2), &first);
    restore("1", letters(2), &meanwhile);
    plc->settle();
    plc->values[QStringLiteral("a")] = integer(9);
    restore("1", letters(2), &later);
    plc->settle();
    EXPECT_EQ("1", first);
    EXPECT_EQ("1", meanwhile);
    EXPECT_EQ("1", later) << "the report of the first";
    EXPECT_EQ(1, writes());
    restore("1", named("Winter", "press"), &later);
    EXPECT_EQ("2 this id restored another recipe", later);
    restore("2", letters(2), &later);
    plc->settle();
    EXPECT_EQ(2, writes());
}

TEST_F(RecipeDeskTest, AnIdRestoresOnceAlsoWhenItsReportIsForgotten)
{
    std::string outcome;
    for (int i = 0; i < 201; ++i) {
        restore(QByteArray::number(i).constData(), letters(2), &outcome);
        plc->settle();
        ASSERT_EQ("0", outcome);
    }
    restore("0", letters(2), &outcome);
    EXPECT_EQ("6 this id was restored; its report is not kept any more", outcome);
    restore("1", letters(2), &outcome);
    EXPECT_EQ("0", outcome);
}

TEST_F(RecipeDeskTest, ARestoreIsToldAgainWithoutItsRecipe)
{
    std::string outcome = "not called";
    const auto tell = [&outcome](const RecipeResult<RestoreReport>& report) {
        outcome = failure(report);
        if (outcome.empty())
            outcome = std::to_string(std::get<RestoreReport>(report).written);
    };
    EXPECT_FALSE(desk.repeat(QStringLiteral("1"), letters(2).name, tell));
    EXPECT_EQ("not called", outcome);
    plc->values[QStringLiteral("a")] = integer(9);
    std::string first;
    restore("1", letters(2), &first);
    EXPECT_TRUE(desk.repeat(QStringLiteral("1"), letters(2).name, tell));
    EXPECT_EQ("not called", outcome) << "it waits for the first";
    plc->settle();
    EXPECT_EQ("1", outcome);
    outcome.clear();
    EXPECT_TRUE(desk.repeat(QStringLiteral("1"), letters(2).name, tell));
    EXPECT_EQ("1", outcome);
    EXPECT_TRUE(desk.repeat(QStringLiteral("1"), QStringLiteral("Winter"), tell));
    EXPECT_EQ("2 this id restored another recipe", outcome);
}

TEST_F(RecipeDeskTest, APlcIsRestoredByOneAtATime)
{
    std::string first;
    std::string second;
    std::string elsewhere;
    restore("1", letters(2), &first);
    restore("2", named("Winter", "press"), &second);
    restore("3", named("Winter", "mill"), &elsewhere);
    EXPECT_EQ("2 press is being restored by somebody else", second);
    plc->settle();
    EXPECT_EQ("0", first);
    EXPECT_EQ("0", elsewhere);
    restore("2", named("Winter", "press"), &second);
    plc->settle();
    EXPECT_EQ("0", second) << "what was refused may come again with its id";
}

TEST_F(RecipeDeskTest, IdsAreShort)
{
    std::string outcome;
    restore("", letters(2), &outcome);
    EXPECT_EQ("0 expected an id of 1 to 64 characters", outcome);
    restore(QByteArray(65, 'x').constData(), letters(2), &outcome);
    EXPECT_EQ("0 expected an id of 1 to 64 characters", outcome);
    EXPECT_EQ(0, writes());
}

TEST_F(RecipeDeskTest, RestoresOnceItIsPermitted)
{
    std::vector<RecipeDesk::Permitted> waiting;
    const auto restoreLater = [&](const char* id, const Recipe& recipe, std::string* outcome) {
        *outcome = "not settled";
        desk.restore(
            QString::fromLatin1(id), recipe, plc,
            [outcome](const RecipeResult<RestoreReport>& report) {
                *outcome = failure(report);
                if (outcome->empty())
                    *outcome = std::to_string(std::get<RestoreReport>(report).written);
            },
            [&](RecipeDesk::Permitted permitted) { waiting.push_back(std::move(permitted)); });
    };
    const auto isKnown = [&](const char* id) {
        return desk.repeat(QString::fromLatin1(id), letters(2).name,
                           [](const RecipeResult<RestoreReport>&) {});
    };
    plc->values[QStringLiteral("a")] = integer(7);
    std::string refused;
    std::string again;
    restoreLater("1", letters(2), &refused);
    EXPECT_TRUE(isKnown("1"));
    restoreLater("1", letters(2), &again);
    ASSERT_EQ(1U, waiting.size()) << "who asks again waits for the first";
    waiting[0](QStringLiteral("the disk is full"));
    EXPECT_EQ("5 the disk is full", refused);
    EXPECT_EQ("5 the disk is full", again);
    EXPECT_FALSE(isKnown("1"));
    EXPECT_TRUE(plc->log.isEmpty());

    std::string first;
    std::string second;
    restoreLater("1", letters(2), &first);
    restoreLater("2", letters(2), &second);
    ASSERT_EQ(3U, waiting.size());
    waiting[1]({});
    waiting[2]({});
    EXPECT_EQ("2 press is being restored by somebody else", second);
    plc->settle();
    EXPECT_EQ("1", first);
}

} // namespace
} // namespace plc::panel
