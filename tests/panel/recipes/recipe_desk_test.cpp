#include "panel/recipes/recipe_desk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/panel/recipes/model_plc.h"
#include "tests/support/file_test.h"
#include "tests/support/hanging_disk.h"

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
    static constexpr char kOpen[] = "not settled";

    RecipeDesk::SaveOrder order(const QStringList& labels, const char* name = "Summer") const
    {
        return {QString::fromLatin1(name), QStringLiteral("press"), labels, QStringLiteral("anna"),
                1234};
    }
    /// What came of it, once that is known.
    template <typename T>
    static RecipeTold<T> into(std::string* outcome)
    {
        *outcome = kOpen;
        return [outcome](const RecipeResult<T>& result) { *outcome = failure(result); };
    }
    /// Until the disk has answered.
    void await(const std::string& outcome)
    {
        while (outcome == kOpen) {
            bell.await();
            desk.deliver();
        }
    }
    std::string save(const QStringList& labels, const char* name = "Summer")
    {
        std::string outcome;
        desk.save(order(labels, name), plc, into<Recipe>(&outcome));
        plc->settle();
        await(outcome);
        return outcome;
    }
    /// The recipe, or the failure.
    std::string find(const char* name, Recipe* recipe = nullptr)
    {
        std::string outcome = kOpen;
        desk.find(QString::fromLatin1(name), [&](const RecipeResult<Recipe>& found) {
            outcome = failure(found);
            if (recipe && outcome.empty())
                *recipe = std::get<Recipe>(found);
        });
        await(outcome);
        return outcome;
    }
    std::string remove(const char* name)
    {
        std::string outcome;
        desk.remove(QString::fromLatin1(name), into<bool>(&outcome));
        await(outcome);
        return outcome;
    }
    /// The outcome, "" for a report.
    void restore(const char* id, const Recipe& recipe, std::string* outcome)
    {
        *outcome = kOpen;
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

    plc::test::Bell bell;
    RecipeDesk desk{path("recipes"), [this] { bell.ring(); }};
    std::shared_ptr<ModelPlc> plc = std::make_shared<ModelPlc>();
};

TEST_F(RecipeDeskTest, SavesWhatThePlcHasNow)
{
    EXPECT_EQ("", save({QStringLiteral("b"), QStringLiteral("a")}));
    Recipe recipe;
    ASSERT_EQ("", find("Summer", &recipe));
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
    Recipe recipe;
    EXPECT_EQ("", find("Summer", &recipe));
    EXPECT_EQ(1, recipe.entries.size()) << "the old one stays";
}

TEST_F(RecipeDeskTest, WhatMakesNoSenseIsNotAsked)
{
    EXPECT_EQ("0 expected labels of values", save({}));
    EXPECT_EQ("0 a stands twice", save({QStringLiteral("a"), QStringLiteral("a")}));
    EXPECT_TRUE(plc->log.isEmpty());
    EXPECT_EQ("1 there is no recipe of that name", find("x"));
    EXPECT_EQ("1 there is no recipe of that name", remove("../x"));
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
        *outcome = kOpen;
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

TEST_F(RecipeDeskTest, ChangesOfARecipeAreMadeInTheOrderInWhichTheyWereAskedFor)
{
    const auto slow = std::make_shared<ModelPlc>();
    slow->values = plc->values;
    std::string first;
    std::string removed;
    std::string last;
    desk.save(order({QStringLiteral("a"), QStringLiteral("b")}), slow, into<Recipe>(&first));
    desk.remove(QStringLiteral("Summer"), into<bool>(&removed));
    desk.save(order({QStringLiteral("a")}), plc, into<Recipe>(&last));
    plc->settle();
    EXPECT_EQ("", save({QStringLiteral("a")}, "Winter")) << "waits for no other recipe";
    EXPECT_EQ(kOpen, removed);
    EXPECT_EQ(kOpen, last);
    slow->settle();
    await(last);
    EXPECT_EQ("", first);
    EXPECT_EQ("", removed) << "it was there";
    EXPECT_EQ("", last);
    Recipe recipe;
    EXPECT_EQ("", find("Summer", &recipe));
    EXPECT_EQ(1, recipe.entries.size());
}

TEST_F(RecipeDeskTest, WhatFollowsASaveThatCannotBeMadeIsDone)
{
    EXPECT_EQ("", save({QStringLiteral("a")}));
    const auto slow = std::make_shared<ModelPlc>();
    std::string unreadable;
    std::string removed;
    desk.save(order({QStringLiteral("a")}), slow, into<Recipe>(&unreadable));
    desk.remove(QStringLiteral("Summer"), into<bool>(&removed));
    slow->settle();
    EXPECT_EQ("3 a: the PLC refuses it; nothing was saved", unreadable);
    await(removed);
    EXPECT_EQ("", removed);
}

TEST_F(RecipeDeskTest, OfTwoSavesAtOnceOneIsTheLastThatThereIsRoomFor)
{
    ASSERT_TRUE(QDir().mkpath(path("recipes")));
    for (int i = 1; i < RecipeFolder::kMostRecipes; ++i)
        files.put(path(QByteArray("recipes/" + QByteArray::number(i)).constData()), "");
    std::string first;
    std::string second;
    desk.save(order({QStringLiteral("a")}, "Summer"), plc, into<Recipe>(&first));
    desk.save(order({QStringLiteral("a")}, "Winter"), plc, into<Recipe>(&second));
    plc->settle();
    await(second);
    EXPECT_EQ("", first);
    EXPECT_THAT(second, testing::HasSubstr("there are 1000 recipes"));
}

/// A desk whose disk answers when the test wants it to.
class RecipesOnAHangingDisk : public RecipeDeskTest {
protected:
    RecipesOnAHangingDisk()
    {
        EXPECT_EQ("", save({QStringLiteral("a")}));
        plc::test::diskGate().setOpen(false);
        desk.save(order({QStringLiteral("b")}), plc, into<Recipe>(&saved));
        plc->settle();
        plc::test::diskGate().awaitArrival();
    }
    ~RecipesOnAHangingDisk() override { plc::test::diskGate().setOpen(true); }

    std::string saved;
};

TEST_F(RecipesOnAHangingDisk, NobodyWaits)
{
    EXPECT_TRUE(desk.busySince());
    std::string listed;
    std::string found;
    std::string removed;
    desk.list(into<QVector<RecipeSummary>>(&listed));
    desk.find(QStringLiteral("Summer"), into<Recipe>(&found));
    desk.remove(QStringLiteral("Summer"), into<bool>(&removed));
    desk.deliver();
    EXPECT_EQ(kOpen, saved);
    EXPECT_EQ(kOpen, listed);
    EXPECT_EQ(kOpen, found);
    EXPECT_EQ(kOpen, removed);
    plc->values[QStringLiteral("a")] = integer(9);
    std::string restored;
    restore("1", letters(2), &restored);
    plc->settle();
    EXPECT_EQ("1", restored) << "the PLC is asked meanwhile";
    plc::test::diskGate().setOpen(true);
    await(removed);
    EXPECT_EQ("", saved);
    EXPECT_EQ("", listed);
    EXPECT_EQ("", found);
    EXPECT_EQ("", removed);
    EXPECT_FALSE(desk.busySince());
}

TEST_F(RecipesOnAHangingDisk, NoMoreWaitThanThereIsRoomFor)
{
    std::vector<std::string> outcomes(RecipeFiles::kMostWaiting);
    for (std::string& outcome : outcomes)
        desk.find(QStringLiteral("Summer"), into<Recipe>(&outcome));
    EXPECT_EQ(kOpen, outcomes[outcomes.size() - 2]);
    EXPECT_EQ("7 too many wait for the recipes' disk; ask again later", outcomes.back());
    std::string more;
    desk.save(order({QStringLiteral("a")}), plc, into<Recipe>(&more));
    EXPECT_EQ("7 too many wait for the recipes' disk; ask again later", more);
    plc::test::diskGate().setOpen(true);
    await(outcomes[outcomes.size() - 2]);
    EXPECT_EQ("", find("Summer"));
}

TEST_F(RecipesOnAHangingDisk, KeepsNobodyFromEndingAndWhatIsNotKnownIsToldSo)
{
    std::string found;
    std::string unread;
    std::string behind;
    desk.find(QStringLiteral("Summer"), into<Recipe>(&found));
    desk.save(order({QStringLiteral("a")}, "Winter"), plc, into<Recipe>(&unread));
    desk.remove(QStringLiteral("Winter"), into<bool>(&behind));
    desk.stop();
    EXPECT_EQ("7 the program ends", found);
    desk.find(QStringLiteral("Summer"), into<Recipe>(&found));
    EXPECT_EQ("7 the program ends", found);
    desk.finish(std::chrono::milliseconds(0));
    EXPECT_EQ("8 the disk did not answer before the program ended", saved);
    EXPECT_EQ("7 the program ends", unread);
    EXPECT_EQ("7 the program ends", behind);
    plc->settle();
    EXPECT_EQ("7 the program ends", save({QStringLiteral("a")}));
}

} // namespace
} // namespace plc::panel
